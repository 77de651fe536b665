#include "varden/config/config_text.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <type_traits>

#include "base/ascii.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/Procedure.h"
#include "platform/folder_lock.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"
#include "varden/VardenLogger.h"
#include "varden/config/wire_codes.h"
#include "varden/friendly.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_VardenLogger";
constexpr std::string_view DayPattern = "MM-DD-YYYY", MomentPattern = "MM-DD-YYYY Hh:Nn:Ss";

/// A date of the record that is written as a day, without its time.
template <class Date>
struct Day {
  Date& Value;
};
template <class Date>
Day(Date&) -> Day<Date>;

/// What may be edited, for reading and writing: calls `visit(label, field)`, with a default when it is not 0
/// or empty.
template <class Record, class Visit>
void visitEditable(Record& r, Visit& visit) {
  visit("Subject Identity", r.EncodedSetup);
  visit("Battery Installed/Charged Date", Day{r.BatteryDate});
  visit("Light Calibration Factor", r.LightScaleCalibration);
  visit("Activity Calibration Factor", r.ActivityCalibration);
  visit("Acquisition Mode", r.AcquisitionMode);
  visit("Epoch Length", r.EpochLength, "1");
  visit("Acquisition Start Time", r.StartTimeGMT);
  visit("Acquisition Stop Time", r.EndTimeGMT);
  visit("Time Zone Bias", r.TZbias);
  visit("Time Zone Standard Bias", r.TZstandardBias);
  visit("Time Zone Daylight Bias", r.TZdaylightBias);
  visit("Time Zone DST Start", r.TZdstStart);
  visit("Time Zone DST End", r.TZdstEnd);
  visit("Time Zone Standard Abbreviation", r.TZstandardAbbrev, "UNK");
  visit("Time Zone Daylight Abbreviation", r.TZdaylightAbbrev, "UNK");
  visit("Displayed Time Format", r.TimeFormat);
  visit("Displayed Date Format", r.DateFormat);
  visit("Red Light Calibration", r.RedLightCalibration);
  visit("Green Light Calibration", r.GreenLightCalibration);
  visit("Blue Light Calibration", r.BlueLightCalibration);
  visit("Button 1 Map", r.Button1Map);
  visit("Button 2 Map", r.Button2Map);
  visit("Resets", r.Resets);
  visit("Low Power Shutdowns", r.LowPowerShutdowns);
  visit("Acquisition Threshold", r.AcqThreshold);
  visit("Data Available", r.DataAvailable);
  visit("Score Minimum", r.ScoreMin);
  visit("Score Maximum", r.ScoreMax);
  visit("Off Wrist On Threshold", r.OffWristOnThreshold);
  visit("Off Wrist Off Threshold", r.OffWristOffThreshold);
  visit("Unused 2", r.Unused2);
}

std::string hexText(const std::optional<ByteArray>& bytes) {
  return Class_Tools::fncConvertByteArrayToHexString(bytes ? std::span<const std::uint8_t>(*bytes)
                                                           : std::span<const std::uint8_t>());
}

enum class Rows : std::uint8_t { Numbers, Words };

/// Collects the fields as text.
class ItemWriter {
 public:
  ItemWriter(ConfigItems& items, Rows rows) : items_(items), rows_(rows) {}

  template <class Field>
  void operator()(const char* label, const Field& field, const char* /*byDefault*/ = nullptr) {
    items_.emplace_back(label, text(field));
  }

 private:
  std::string text(const std::string& field) const { return field; }
  std::string text(double date) const { return formatDate(date, MomentPattern); }
  std::string text(Day<const double> date) const { return formatDate(date.Value, DayPattern); }
  std::string text(const std::optional<ByteArray>& bytes) const { return hexText(bytes); }
  template <class Number>
  requires std::is_integral_v<Number> std::string text(Number field)
  const { return std::to_string(field); }
  template <class Row>
  requires std::is_enum_v<Row> std::string text(Row row)
  const {
    return rows_ == Rows::Words ? std::string(friendlyText(row))
                                : std::to_string(static_cast<std::int32_t>(row));
  }

  ConfigItems& items_;
  Rows rows_;
};

[[noreturn]] void refuse(const char* label, std::string_view value, const char* what) {
  fault::raise(fault::TypeMismatch, std::string(label) + ": \"" + std::string(value) + "\" is no " + what);
}

/// Reads a date by position: "MM-DD-YYYY", then nothing (midnight) or a blank and "Hh:Nn:Ss". A text of
/// another length is refused, so months, days and hours have two digits.
std::optional<double> parseDate(std::string_view text) {
  if (text.size() != DayPattern.size() && text.size() != MomentPattern.size()) return std::nullopt;
  const auto field = [&](std::size_t from, std::size_t length) -> std::int32_t {
    const std::string_view digits = text.substr(from - 1, length);
    return isDigits(digits) ? roundToInt32(leadingNumber(digits)) : -1;
  };
  const std::int32_t month = field(1, 2), day = field(4, 2), year = field(7, 4);
  if (month < 1 || month > 12 || day < 1 || day > 31 || year < 100) return std::nullopt;
  double date = dateSerial(year, month, day);
  if (text.size() == MomentPattern.size()) {
    const std::int32_t hour = field(12, 2), minute = field(15, 2), second = field(18, 2);
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return std::nullopt;
    date = addTime(date, timeSerial(hour, minute, second));
  }
  // Writing the date back shows a day that does not exist, such as 30 February, which has become another one.
  // Separators are not compared: they may be any character.
  const std::string back = formatDate(date, text.size() == DayPattern.size() ? DayPattern : MomentPattern);
  for (const std::size_t from : std::initializer_list<std::size_t>{0, 3, 6, 11, 14, 17})
    if (from < back.size() && back.substr(from, 2) != text.substr(from, 2)) return std::nullopt;
  return date;
}

/// Takes the fields from a file.
class FieldReader {
 public:
  explicit FieldReader(const IniFile& file) : file_(file) {}

  template <class Field>
  void operator()(const char* label, Field&& field, const char* byDefault = nullptr) const {
    constexpr bool isText = std::is_same_v<std::decay_t<Field>, std::string>;
    if (byDefault == nullptr) byDefault = isText ? "" : "0";
    read(label, field, file_.value(ConfigDataSection, label), byDefault);
  }

 private:
  using Value = std::optional<std::string_view>;

  void read(const char*, std::string& field, Value value, const char* byDefault) const {
    field = value.value_or(byDefault);
  }

  void read(const char* label, double& field, Value value, const char*) const {
    if (value && !trimBlanks(*value).empty()) field = dateOf(label, *value);
  }

  /// An unchanged day keeps the time of day that the record has.
  void read(const char* label, Day<double>& field, Value value, const char*) const {
    if (!value || trimBlanks(*value).empty()) return;
    const double day = datePart(dateOf(label, *value));
    if (day != datePart(field.Value)) field.Value = day;
  }

  void read(const char* label, std::optional<ByteArray>& field, Value value, const char*) const {
    if (!value || value->empty()) {
      field.reset();
      return;
    }
    const auto bytes = Class_Tools::fncConvertHexStringToByteArray(*value);
    if (bytes.LBound() != 0) refuse(label, *value, "hexadecimal text");
    field = ByteArray(bytes.begin(), bytes.end());
  }

  template <class Number>
  requires std::is_integral_v<Number>
  void read(const char* label, Number& field, Value value, const char* byDefault) const {
    const std::string_view text = value.value_or(byDefault);
    const auto number = parseUngroupedNumber(text);
    if (!number) refuse(label, text, "number");
    if (!(*number > std::numeric_limits<Number>::min() - 0.5 &&
          *number < std::numeric_limits<Number>::max() + 0.5))
      fault::raise(fault::Overflow, std::string(label) + ": \"" + std::string(text) + "\"");
    field = fault::narrow<Number>(roundToInt32(*number));
  }

  template <class Row>
  requires std::is_enum_v<Row>
  void read(const char* label, Row& field, Value value, const char* byDefault) const {
    std::underlying_type_t<Row> number = 0;
    read(label, number, value, byDefault);
    field = static_cast<Row>(number);
  }

  static double dateOf(const char* label, std::string_view text) {
    const auto date = parseDate(text);
    if (!date) refuse(label, text, "date of the form MM-DD-YYYY Hh:Nn:Ss");
    return *date;
  }

  const IniFile& file_;
};

void setValues(IniFile& file, std::string_view section, const ConfigItems& items) {
  for (const auto& [label, value] : items) {
    if (!IniFile::canHold(value)) fault::raise(fault::InvalidCall, label + " holds a line break");
    file.setValue(section, label, IniFile::quotedIfNeeded(value));
  }
}

std::string readIfThere(const std::string& path) {
  platform::Files& files = platform::current().files();
  return withFileFaults(path, [&] {
    return files.state(path).Kind == platform::FileKind::Missing ? std::string() : files.read(path);
  });
}

void writeFile(const std::string& path, std::string_view content) {
  withFileFaults(path, [&] { platform::current().files().write(path, content); });
}

}  // namespace

ConfigItems editableConfig(const VardenRecord& record) {
  ConfigItems items;
  ItemWriter writer(items, Rows::Numbers);
  visitEditable(record, writer);
  return items;
}

void readEditableConfig(const IniFile& file, VardenRecord& record) {
  FieldReader reader(file);
  visitEditable(record, reader);
}

ConfigItems readOnlyConfig(const VardenRecord& record) {
  return {{"CRC", upperHex(static_cast<std::uint32_t>(record.ConfigCRC), 4)},
          {"Version", std::to_string(record.StructureVersion)},
          {"Memory Size", std::to_string(record.MemorySize)},
          {"Features Flag 1", upperHex(record.FeaturesFlag1, 2)},
          {"Features Flag 2", upperHex(record.FeaturesFlag2, 2)},
          {"Serial Number", record.SerialNumber},
          {"Next Memory Address", upperHex(static_cast<std::uint32_t>(record.BytesUsed), 6)},
          {"Low Power Shutdown Flag", fncFriendlyLowPowerFormat(record.LowPowerShutdownFlag)},
          {"Kestrin Model", fncFriendlyKRmodel(record.Model)},
          {"Firmware Version", record.FirmwareVersion},
          {"Memory Full Flag", fncFriendlyMemFullFormat(record.MemoryFull)},
          {"Unused 1", hexText(record.Unused1)},
          {"Boot Loader Flag", upperHex(record.BootLoaderFlag, 2)}};
}

ConfigItems configInWords(const VardenRecord& record) {
  ConfigItems items;
  ItemWriter writer(items, Rows::Words);
  visitEditable(record, writer);
  for (auto& item : readOnlyConfig(record)) items.push_back(std::move(item));
  return items;
}

void VardenLogger::subWriteConfigToINIfile(std::string_view path) {
  Procedure procedure{Module, "subWriteConfigToINIfile"};
  procedure.passesOn(fault::PathFileAccess);
  procedure.run([&] {
    const std::string native = nativePath(path);
    const auto lock = procedure.statement([&] {
      return withFileFaults(native, [&] {
        return platform::lockFolder(platform::current().files(), platform::folderOf(native));
      });
    });
    const std::string former = procedure.statement([&] { return readIfThere(native); });
    procedure.statement([&] { IniFile::requireUtf8(former, native); });
    IniFile file(former);
    procedure.statement([&] {
      setValues(file, ConfigDataSection, editableConfig(record));
      setValues(file, ReadOnlyConfigSection, readOnlyConfig(record));
      setValues(file, ConfigBytesSection, {{std::string(RawConfigBytesKey), record.RawConfigHex}});
    });
    procedure.statement([&] { writeFile(native, file.content()); });
  });
}

void VardenLogger::subReadConfigFromINIfile(std::string_view path) {
  Procedure procedure{Module, "subReadConfigFromINIfile"};
  procedure.passesOn(fault::PathFileAccess);
  procedure.run([&] {
    const std::string native = nativePath(path);
    const std::string content = procedure.statement([&] {
      return withFileFaults(
          native, [&] { return platform::current().files().readUpTo(platform::Files::LongestText, native); });
    });
    procedure.statement([&] { IniFile::requireUtf8(content, native); });
    const IniFile file(content);
    procedure.statement([&] {
      VardenRecord edited = record;
      readEditableConfig(file, edited);
      record = std::move(edited);
    });
  });
}

void VardenLogger::subWriteConfigToBINfile(std::string_view path) {
  Procedure procedure{Module, "subWriteConfigToBINfile"};
  procedure.passesOn(fault::PathFileAccess);
  procedure.run([&] {
    const PacketArray packets = procedure.statement([&] { return Get_ConfigPackets(); });
    if (!packets) return;
    std::string image;
    for (const Class_Packet& packet : *packets) image.append(packet.BinData.begin(), packet.BinData.end());
    procedure.statement([&] { writeFile(nativePath(path), image); });
  });
}

std::string VardenLogger::fncConfigToString(std::string_view separator) {
  Procedure procedure{Module, "fncConfigToString"};
  return procedure.run([&] {
    std::string text;
    for (const auto& [label, value] : configInWords(record))
      text.append(label).append(separator).append(value).append("\r\n");
    return text;
  });
}

}  // namespace hy_wristlog
