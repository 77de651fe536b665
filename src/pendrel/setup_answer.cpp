#include "pendrel/setup_answer.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "base/code_page.h"
#include "base/dates.h"
#include "base/numbers.h"
#include "pendrel/starred.h"
#include "pendrel/subject_text.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

constexpr std::size_t StartLength = 14, BatteryDateLength = 8;

/// Characters of a text, counted from 1; fewer when the text ends before.
std::string_view characters(std::string_view line, std::size_t first, std::size_t last) {
  if (line.size() < first) return {};
  return line.substr(first - 1, last - first + 1);
}

std::string_view lastCharacters(std::string_view line, std::size_t count) {
  return line.size() < count ? std::string_view{} : line.substr(line.size() - count);
}

std::optional<std::uint8_t> byteField(std::string_view line, std::size_t first) {
  const std::string_view digits = characters(line, first, first + 1);
  const auto value = digits.size() == 2 ? parseHexadecimal(digits) : std::nullopt;
  return value ? std::optional(static_cast<std::uint8_t>(*value)) : std::nullopt;
}

std::int16_t memorySize(std::string_view code) {
  if (code == "1F") return 8;
  if (code == "3F") return 16;
  if (code == "7F") return 32;
  return code == "FF" ? std::int16_t{64} : std::int16_t{-1};
}

std::int16_t epochOfCode(std::uint8_t code) {
  if (code >= 1 && code <= 63) return static_cast<std::int16_t>(code * 15);
  switch (code) {
    case 0x81:
      return 2;
    case 0xC1:
      return 5;
    case 0xC2:
      return 10;
    default:
      return -1;
  }
}

/// The pointer is counted from the end of the header. The highest values are addresses inside the header:
/// nothing is recorded.
std::int32_t bytesOfPointer(std::string_view digits) {
  constexpr std::uint32_t FirstInHeader = 0xFF80;
  const auto pointer = parseHexadecimal(digits);
  if (!pointer) return -1;
  return *pointer >= FirstInHeader ? 0 : static_cast<std::int32_t>(*pointer);
}

bool within(double value, double low, double high) { return value >= low && value <= high; }

/// UnknownDate unless day, month and year are on the calendar.
double dateOf(double day, double month, double year) {
  if (!within(day, 1, 31) || !within(month, 1, 12) || !within(year, 0, 99)) return UnknownDate;
  return dateSerial(roundToInt32(year), roundToInt32(month), roundToInt32(day));
}

/// The date in the first eight characters.
double dateOf(std::string_view line) {
  const auto day = parseNumber(characters(line, 1, 2)), month = parseNumber(characters(line, 4, 5)),
             year = parseNumber(characters(line, 7, 8));
  return day && month && year ? dateOf(*day, *month, *year) : UnknownDate;
}

double startTime(std::string_view line) {
  const auto hour = parseNumber(characters(line, 10, 11)), minute = parseNumber(characters(line, 13, 14));
  if (!hour || !minute || !within(*hour, 0, 23) || !within(*minute, 0, 59)) return UnknownDate;
  return timeSerial(roundToInt32(*hour), roundToInt32(*minute), 0);
}

/// What stands before the byte of the acquisition mode: the command that asks for it.
std::string modeQuestion() {
  return std::string(starred::ReadLocation.Text) + starred::hexWord(starred::ModeLocation);
}

/// Lines end with a carriage return, and a line feed of the text's own follows it.
std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\r'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<std::size_t>(text.size(), 1));
  }
  return lines;
}

}  // namespace

bool hasTwoDigitYear(double date) {
  constexpr std::int32_t Century = 100;
  const std::int32_t year = civilFromDate(date).Year;
  return civilFromDate(dateSerial(year % Century, 1, 1)).Year == year;
}

void takeDeviceRecord(PendrelRecord& record, std::string_view line7) {
  record.SerialNumber =
      utf8FromAnsiText(std::string(characters(line7, 1, 3)).append(characters(line7, 8, 11)));
  record.MemorySizeKB = memorySize(characters(line7, 13, 14));
  record.FirmwareVersion = static_cast<std::uint8_t>(parseHexadecimal(characters(line7, 2, 3)).value_or(0));
}

void takeSetup(PendrelRecord& record, const SetupLines& lines) {
  record.SubjectInfo = lines[1];
  decodeSubjectText(record);

  const auto epochCode = byteField(lines[2], 1);
  record.EpochLength = epochCode ? epochOfCode(*epochCode) : std::int16_t{-1};
  const auto line3 = parseHexadecimal(lastCharacters(lines[3], 2));
  record.SetupLine3Value = line3 ? static_cast<std::int16_t>(*line3) : std::int16_t{-1};
  record.BytesUsed = std::min(bytesOfPointer(lastCharacters(lines[4], 4)), record.Get_MaxBytesUsed());

  const bool hasStart = lines[5].size() == StartLength;
  record.StartDate = hasStart ? dateOf(lines[5]) : UnknownDate;
  record.StartTime = hasStart ? startTime(lines[5]) : UnknownDate;
  record.ActivityCalibration = byteField(lines[7], 5).value_or(0);
  const auto resets = byteField(lines[7], 16);
  record.Resets = resets ? std::int16_t{*resets} : std::int16_t{-1};
  record.BatteryDate = lines[6].size() == BatteryDateLength ? dateOf(lines[6]) : UnknownDate;
}

void takeMode(PendrelRecord& record, std::uint8_t kept) {
  switch (kept) {
    case starred::StepsMode:
      record.AcquisitionMode = PD_Mode_ActivityAndSteps;
      break;
    case starred::ActivityMode:
      record.AcquisitionMode = PD_Mode_ActivityOnly;
      break;
    default:
      record.AcquisitionMode = PD_Mode_Unknown;
  }
}

std::string modeText(std::uint8_t kept) {
  return "\r\n" + modeQuestion() + Tools().fncConvertByteToHexString(kept) + "\r\n";
}

bool takeSetupText(PendrelRecord& record) {
  constexpr std::size_t ModeLine = 8;  // after the checksum
  const std::vector<std::string> kept = linesOf(record.SetupText);
  SetupLines lines;
  if (kept.size() < lines.size() - 1) return false;
  std::copy_n(kept.begin(), lines.size() - 1, lines.begin() + 1);
  takeDeviceRecord(record, lines.back());
  takeSetup(record, lines);
  record.AcquisitionMode = PD_Mode_ActivityOnly;
  if (record.Get_DeviceType() != KR_PENDREL_CRC_STEPS) return true;
  const std::string question = modeQuestion();
  if (kept.size() <= ModeLine || !kept[ModeLine].starts_with(question)) return false;
  const auto mode = byteField(kept[ModeLine], question.size() + 1);
  if (mode) takeMode(record, *mode);
  return mode.has_value();
}

bool takeZoneOfOffset(PendrelRecord& record) {
  Class_TimeZoneTools& tools = TimeZoneTools();
  tools.fncPopulateTZICollection();
  const double start = record.StartDate + record.StartTime;
  for (const TimeZoneRef& zone : tools.Get_TimeZoneArray()) {
    if (Class_TimeZoneTools::fncCalcOffset(start, *zone, record.AutoDSTadjust) != record.GMToffset) continue;
    if (!zone->Abbreviation.empty()) record.TimeZoneAbbrev = zone->Abbreviation;
    return true;
  }
  return false;
}

}  // namespace hy_wristlog
