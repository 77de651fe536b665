#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/Procedure.h"
#include "varden/VardenLogger.h"
#include "varden/decode/event_records.h"
#include "varden/failures.h"
#include "varden/files/data_files.h"
#include "varden/varden_seconds.h"

namespace hy_wristlog {
namespace {

constexpr std::int64_t TimeAt = 3;
/// The reader passes over an event record but for its last byte, which so counts as an activity code.
constexpr std::int64_t EventStep = EventRecordLength - 1;
constexpr std::size_t SubjectLength = 19;
constexpr std::int32_t SecondsPerUnit = 15;

constexpr const char* Name = "subSaveActivityOnlyKRD";

[[noreturn]] void refuse(const char* text) { raiseFrom(Name, FailureNumber::OutOfRange, text); }

void checkRecord(const VardenRecord& record) {
  if (record.ActivityCalibration == 0) refuse("Activity calibration is zero! Try 'Show Config' first...");
  if (record.BytesUsed == 0) refuse("Next memory address is zero! Try 'Show Config' first...");
}

/// The text of each activity code: the counts of the decoder's scale times 128 / calibration, but without its
/// limit, and code 253 has counts too.
std::array<std::string, 256> activityTexts(std::uint8_t calibration) {
  constexpr std::int32_t HighestCount = 32767;
  constexpr std::size_t CodesWithCounts = 254;
  const NumberFormat format("#####0");
  std::array<std::string, 256> texts;
  std::int32_t counts = 0;
  for (std::size_t code = 0; code < texts.size(); ++code) {
    texts[code] = format(roundToInt32((code < CodesWithCounts ? counts : -1) * 128.0 / calibration));
    counts = std::min(counts + 1 + counts / 32, HighestCount);
  }
  return texts;
}

/// Takes over the time of the last acquisition start and returns the position after it. Without a start the
/// record keeps its time and the position is 0. Samples that look like a start count as one. A start in the
/// last 6 bytes does not count.
std::int64_t findLastStart(VardenRecord& record, std::int64_t last) {
  const ByteArray& raw = *record.RawData;
  std::int64_t position = 0;
  for (std::int64_t at = 0; at + EventStep <= last; ++at) {
    if (fault::at(raw, at) != EventMark || (fault::at(raw, at + 1) & AcquisitionStart) == 0) continue;
    record.StartTimeGMT = dateFromUnixSeconds(loggerSecondsAt(raw, at + TimeAt));
    position = at + EventStep;
  }
  return position;
}

/// The offset has the opposite sign of the one in the decoded report.
void addHeading(DataFile& file, const VardenRecord& record) {
  const double start = addTime(record.StartTimeGMT, -(record.GMToffset / MinutesPerDay));
  const std::string subject = ansiTextFromUtf8(record.EncodedSetup).substr(0, SubjectLength);
  for (const std::string& item :
       {utf8FromAnsiText(subject), formatDate(start, "dd-mmm-yyyy"), formatDate(start, "Hh:Nn"),
        std::to_string(record.EpochLength / SecondsPerUnit), std::string("99"), std::string("V639999"),
        std::string("M")})
    file.plain(item).endLine();
}

void addActivity(DataFile& file, const VardenRecord& record, std::int64_t position, std::int64_t last) {
  const auto texts = activityTexts(record.ActivityCalibration);
  while (position <= last - UnreadTail) {
    const std::uint8_t code = fault::at(*record.RawData, position);
    if (code == EventMark) {
      position += EventStep;
    } else if (code == StatusMark) {
      position += StatusRecordLength;
    } else {
      file.plain(texts[code]).endLine();
      ++position;
    }
  }
}

}  // namespace

void VardenLogger::subSaveActivityOnlyKRD(std::string_view path) {
  saveDataFile(record, Name, path, [this](Procedure& procedure, DataFile& file) {
    procedure.statement([&] { checkRecord(record); });
    const std::int64_t last = lastRawIndex(record);
    const std::int64_t position = procedure.statement([&] { return findLastStart(record, last); });
    procedure.statement([&] { addHeading(file, record); });
    procedure.statement([&] { addActivity(file, record, position, last); });
  });
}

}  // namespace hy_wristlog
