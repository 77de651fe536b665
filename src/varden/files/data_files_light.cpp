#include <array>
#include <string>

#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "varden/VardenLogger.h"
#include "varden/decode/event_records.h"
#include "varden/failures.h"
#include "varden/files/data_files.h"
#include "varden/varden_seconds.h"

namespace hy_wristlog {
namespace {

constexpr std::int64_t TimeAt = 2, SampleLength = 2;

constexpr std::array<const char*, 4> Resistors{"0 = 560 ohm", "1 = 8.2 kohm", "2 = 150 kohm", "3 = 2.2 Mohm"};

constexpr const char* Name = "subSaveDecodedTolkaTestDataToFile";

[[noreturn]] void refuse(const char* text) { raiseFrom(Name, FailureNumber::NoLightTest, text); }

void checkStart(const ByteArray& raw) {
  if (fault::at(raw, 0) != EventMark) refuse("First byte of Tolka Test data stream is not 253 event mark.");
  if ((fault::at(raw, 1) & AcquisitionStart) == 0)
    refuse("Second byte of Tolka Test data stream is not acquisition start bitmap.");
}

std::string resistorText(std::uint8_t selection) {
  if (selection < Resistors.size()) return Resistors[selection];
  return "Invalid (value=" + std::to_string(selection) + ")";
}

void addReadings(DataFile& file, const VardenRecord& record) {
  const DateFormat date(globals().ShortDateTimeFormat);
  const ByteArray& raw = *record.RawData;
  double second = 0;
  for (std::int64_t at = LightTestSamplesFrom; at <= lastRawIndex(record) - UnreadTail;
       at += SampleLength, ++second)
    file.line(date(record.StartTimeGMT + second / SecondsPerDay), resistorText(fault::at(raw, at)),
              std::to_string(fault::at(raw, at + 1)));
}

}  // namespace

void VardenLogger::subSaveDecodedTolkaTestDataToFile(std::string_view path) {
  saveDataFile(record, Name, path, [this](Procedure& procedure, DataFile& file) {
    procedure.statement([&] { checkStart(*record.RawData); });
    procedure.statement(
        [&] { record.StartTimeGMT = dateFromUnixSeconds(loggerSecondsAt(*record.RawData, TimeAt)); });
    procedure.statement([&] {
      file.line("QV/HY Tolka Logger Light Test Data Output File");
      file.line("Start Time (GMT/UTC):", formatDate(record.StartTimeGMT, globals().LongDateTimeFormat));
      file.line("Serial Number:", record.SerialNumber);
      file.line("Epoch Length:", std::to_string(record.EpochLength) + " seconds");
      file.line();
      file.line("Date/Time Stamp (GMT/UTC)",
                "Resistor Selection (0 = 560 ohm, 1 = 8.2 kohm, 2 = 150 kohm, 3 = 2.2 Mohm)",
                "A/D reading (0-255)");
      file.line();
    });
    procedure.statement([&] { addReadings(file, record); });
  });
}

}  // namespace hy_wristlog
