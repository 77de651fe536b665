#include "engineering/saved_recording.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

#include "base/ascii.h"
#include "base/faults.h"
#include "base/inside.h"
#include "engineering/dates.h"
#include "engineering/files.h"
#include "engineering/recording.h"
#include "platform/digest.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "tools/ini_file.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_text.h"

namespace hy_wristlog::engineering {
namespace {

constexpr std::string_view RecordingSection = "Recording";

struct Key {
  std::string_view Section, Name;
};
constexpr Key Bytes{RecordingSection, "Bytes"}, BytesInLogger{RecordingSection, "Bytes in Logger"},
    Digest{RecordingSection, "SHA-256"}, Retrieved{RecordingSection, "Retrieved"},
    Part{RecordingSection, "Part"}, LowBattery{RecordingSection, "Low Battery"},
    ZoneTaken{RecordingSection, "Time Zone"}, Firmware{ReadOnlyConfigSection, "Firmware Version"},
    DisplayFirmware{ReadOnlyConfigSection, "LCD Firmware Version"},
    Voltage{ReadOnlyConfigSection, "Battery Voltage"},
    LoadedVoltage{ReadOnlyConfigSection, "Loaded Battery Voltage"},
    LoggerTime{ReadOnlyConfigSection, "Logger Time"};
/// What the file keeps besides the config block, in its order.
constexpr Key Facts[] = {Firmware,      DisplayFirmware, Voltage, LoadedVoltage, LoggerTime, Bytes,
                         BytesInLogger, Digest,          Part,    Retrieved,     LowBattery, ZoneTaken};

void put(IniFile& file, const Key& key, std::string_view value) {
  if (!value.empty() && IniFile::canHold(value))
    file.setValue(key.Section, key.Name, IniFile::quotedIfNeeded(value));
}
void put(IniFile& file, const Key& key, std::int64_t value) { put(file, key, std::to_string(value)); }
void put(IniFile& file, const Key& key, float value) {
  char text[32];
  put(file, key, std::string_view(text, std::to_chars(text, text + sizeof text, value).ptr));
}

std::optional<double> dateOf(const IniFile& file, const Key& key) {
  const auto text = file.value(key.Section, key.Name);
  return text ? std::optional(dateFromText(*text)) : std::nullopt;
}

void take(const IniFile& file, const Key& key, std::string& value) {
  if (const auto text = file.value(key.Section, key.Name)) value = *text;
}
/// Raises TypeMismatch for a text that is no number.
void take(const IniFile& file, const Key& key, float& value) {
  const auto text = file.value(key.Section, key.Name);
  if (!text) return;
  const char* const end = text->data() + text->size();
  if (const auto read = std::from_chars(text->data(), end, value); read.ec != std::errc() || read.ptr != end)
    fault::raise(fault::TypeMismatch,
                 std::string(key.Name) + ": \"" + std::string(*text) + "\" is no number");
}

IniFile blockAlone(const std::string& hex) {
  IniFile file("");
  file.setValue(ConfigBytesSection, RawConfigBytesKey, hex);
  return file;
}

void copyFacts(const IniFile& from, IniFile& into) {
  for (const Key& key : Facts)
    if (const auto value = from.value(key.Section, key.Name)) put(into, key, *value);
}

std::string digestOf(const std::vector<std::uint8_t>& bytes) {
  return Class_Tools::fncConvertByteArrayToHexString(platform::sha256(bytes));
}

/// The zone that the retrieval took for the logger's, where that is unknown.
TimeZoneRef zoneOfKey(std::string_view key) {
  const auto& zones = TimeZoneTools().Get_TimeZoneArray();
  const auto found = std::find_if(zones.begin(), zones.end(),
                                  [&](const TimeZoneRef& zone) { return zone && zone->KeyName == key; });
  return found != zones.end() ? *found : nullptr;
}

bool isSet(const std::string& ini, const Key& key) {
  return IniFile(ini).value(key.Section, key.Name) == "1";
}

std::string blockOf(const IniFile& file) {
  return std::string(file.value(ConfigBytesSection, RawConfigBytesKey).value_or(""));
}

}  // namespace

std::int64_t SavedRecording::bytesInLogger() const {
  return Inside::of(*loggerFromConfig(blockOf(IniFile(Ini)))).record.ConfigBlock.NextMemoryAddress;
}

std::optional<double> SavedRecording::retrievedAt() const { return dateOf(IniFile(Ini), Retrieved); }

bool SavedRecording::lowBattery() const { return isSet(Ini, LowBattery); }

bool SavedRecording::isPart() const {
  return isSet(Ini, Part) && static_cast<std::int64_t>(Raw.size()) < bytesInLogger();
}

bool SavedRecording::isPartOfSame(const SavedRecording& other) const {
  const auto recordOf = [](const SavedRecording& recording) {
    return Inside::of(*loggerFromConfig(blockOf(IniFile(recording.Ini)))).record;
  };
  return isPart() && isSameRecording(recordOf(*this), recordOf(other)) && Raw.size() < other.Raw.size();
}

std::string SavedRecording::mismatch() const {
  const auto count = static_cast<std::int64_t>(Raw.size()), held = bytesInLogger();
  const IniFile file(Ini);
  const auto told = [&](const Key& key) { return file.value(key.Section, key.Name); };
  const auto bytes = told(Bytes), digest = told(Digest);
  if (count != held && !isPart())
    return std::to_string(count) + " bytes are there, and the logger held " + std::to_string(held);
  if (bytes && *bytes != std::to_string(count))
    return std::to_string(count) + " bytes are there, and " + std::string(*bytes) + " were retrieved";
  const std::string found = digestOf(Raw);
  if (digest && !equalsIgnoringCase(*digest, found))
    return "the SHA-256 of the bytes is " + found + ", and that of what was retrieved " +
           std::string(*digest);
  return {};
}

SavedRecording savedRecording(const Class_VardenLogger& retrieved, bool lowBattery) {
  const auto& [record, raw] = Inside::of(retrieved).lastRead();
  SavedRecording saved;
  if (raw.empty()) return saved;
  saved.Raw = raw;
  const std::size_t held = record.ConfigBlock.NextMemoryAddress;

  IniFile file = blockAlone(record.RawConfigHex);
  put(file, Firmware, record.FirmwareVersion);
  put(file, DisplayFirmware, record.LCDfirmwareVersion);
  put(file, Voltage, record.BatteryVoltage);
  put(file, LoadedVoltage, record.LoadedBattVoltage);
  if (record.LastLoggerTime > 0) put(file, LoggerTime, isoDate(record.LastLoggerTime, "Z"));
  put(file, Bytes, static_cast<std::int64_t>(saved.Raw.size()));
  put(file, BytesInLogger, static_cast<std::int64_t>(held));
  put(file, Digest, digestOf(saved.Raw));
  if (saved.Raw.size() < held) put(file, Part, std::int64_t{1});
  if (record.LastTimeLoggerRead > 0) put(file, Retrieved, isoDate(record.LastTimeLoggerRead, "Z"));
  put(file, LowBattery, std::int64_t{lowBattery});
  if (record.TimeZone && !Inside::of(*loggerFromConfig(record.RawConfigHex)).record.TimeZone)
    put(file, ZoneTaken, record.TimeZone->KeyName);
  saved.Ini = file.content();
  return saved;
}

SavedRecording savedRecording(const std::string& iniFile, const std::string& rawFile) {
  SavedRecording saved;
  loggerFromIni(iniFile);
  const IniFile source(iniTextOf(iniFile));
  IniFile file = blockAlone(blockOf(source));
  copyFacts(source, file);
  saved.Ini = file.content();
  naming(iniFile, [&] { openRecording(saved); });
  saved.Raw = rawFromFile(rawFile);
  if (saved.Raw.empty())
    throw Failure(FailureNumber::OutOfRange, "engineering.savedRecording",
                  rawFile + " holds no recording: it is empty");
  return saved;
}

std::shared_ptr<Class_VardenLogger> openRecording(const SavedRecording& recording) {
  const IniFile file(recording.Ini);
  auto logger = loggerFromConfig(blockOf(file));
  VardenRecord& record = Inside::of(*logger).record;
  const auto retrieved = recording.retrievedAt();
  // What the logger itself has told counts more than its block.
  if (retrieved || record.FirmwareVersion.empty()) take(file, Firmware, record.FirmwareVersion);
  take(file, DisplayFirmware, record.LCDfirmwareVersion);
  take(file, Voltage, record.BatteryVoltage);
  take(file, LoadedVoltage, record.LoadedBattVoltage);
  if (const auto time = dateOf(file, LoggerTime); time && retrieved) {
    record.LastLoggerTime = *time;
    record.LastTimeLoggerRead = *retrieved;
  }
  if (!record.TimeZone)
    record.TimeZone = zoneOfKey(file.value(ZoneTaken.Section, ZoneTaken.Name).value_or(""));
  setRawData(*logger, recording.Raw);
  return logger;
}

enmDecodeResult decode(Class_VardenLogger& logger, bool diagnostic, bool& lowBatteryDetected) {
  return Inside::of(logger).fncDecodeDataArrays(lowBatteryDetected, std::nullopt, diagnostic);
}

std::string withRecordingOf(const std::string& from, const std::string& into) {
  IniFile file(into);
  file.removeSection(RecordingSection);
  for (const Key& key : Facts)
    // The firmware is one of the keys that every configuration has.
    if (key.Name != Firmware.Name) file.removeKey(key.Section, key.Name);
  copyFacts(IniFile(from), file);
  return file.content();
}

}  // namespace hy_wristlog::engineering
