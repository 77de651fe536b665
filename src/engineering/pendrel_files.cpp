#include "engineering/pendrel_files.h"

#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/inside.h"
#include "engineering/saved_pendrel.h"
#include "engineering/zones.h"
#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "varden/files/data_files.h"

namespace hy_wristlog::engineering {
namespace {

double localStart(const PendrelRecord& record) { return addTime(record.StartDate, record.StartTime); }

void addLogger(DataFile& file, const PendrelRecord& record, const std::string& epoch) {
  file.line("Serial Number:", record.SerialNumber);
  file.line("Epoch Length:", epoch);
  file.line("Model:", record.Get_DeviceText());
  file.line("Firmware Version:", std::to_string(record.FirmwareVersion));
  file.line("Acquisition Mode:", std::to_string(record.AcquisitionMode));
  file.line();
}

void addRows(DataFile& file, const PendrelRecord& record) {
  const bool hasSteps = record.AcquisitionMode == PD_Mode_ActivityAndSteps;
  file.field("Date/Time Stamp (Local)").field("Activity (Counts)");
  if (hasSteps) file.field("Steps");
  file.line("Marker");
  DateSequence dates(globals().ShortDateTimeFormat);
  const double start = localStart(record), epochsPerDay = SecondsPerDay / record.EpochLength;
  for (std::int64_t i = 0; i < record.Samples; ++i) {
    file.field([&](std::string& text) { dates.append(text, start + static_cast<double>(i) / epochsPerDay); });
    file.field(std::to_string(fault::at(record.ActivityArray, i)));
    if (hasSteps) {
      const std::int32_t steps = fault::at(record.StepsArray, i);
      file.field(steps == EmptySteps ? std::string() : std::to_string(steps));
    }
    file.line(fault::at(record.MarkerArray, i) == Tristate::True ? "1" : "");
  }
}

}  // namespace

void saveRawDump(Class_Pendrel& logger, const std::string& path) {
  const PendrelRecord& record = Inside::of(logger).record;
  DataFile file(path);
  file.line(PendrelDumpHeading);
  file.line("Subject ID:", record.SubjectIdentity);
  file.line("Start Time (GMT/UTC):", formatDate(startUtc(logger), globals().LongDateTimeFormat));
  addLogger(file, record, std::to_string(record.EpochLength));
  addRawBytes(file, record.RawData, static_cast<std::int64_t>(record.RawData.size()) - 1);
  file.save();
}

bool saveReport(Class_Pendrel& logger, const std::string& path) {
  const bool isWhole = decode(logger);
  const PendrelRecord& record = Inside::of(logger).record;
  const DateFormat date(globals().LongDateTimeFormat);
  DataFile file(path);
  file.line("QV/HY Decoded Data Output File");
  file.line("Start Time (GMT/UTC):", date(startUtc(logger)));
  file.line("Start Time (Local):", date(localStart(record)));
  addLogger(file, record, std::to_string(record.EpochLength) + " seconds");
  addRows(file, record);
  file.save();
  return isWhole;
}

}  // namespace hy_wristlog::engineering
