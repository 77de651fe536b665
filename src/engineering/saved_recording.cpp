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
#include "engineering/saved_facts.h"
#include "engineering/saved_pendrel.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/ini_file.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_text.h"

namespace hy_wristlog::engineering {
namespace {

using namespace facts;

constexpr Key LowBattery{RecordingSection, "Low Battery"},
    Firmware{ReadOnlyConfigSection, "Firmware Version"},
    DisplayFirmware{ReadOnlyConfigSection, "LCD Firmware Version"},
    Voltage{ReadOnlyConfigSection, "Battery Voltage"},
    LoadedVoltage{ReadOnlyConfigSection, "Loaded Battery Voltage"},
    LoggerTime{ReadOnlyConfigSection, "Logger Time"};
/// What the file keeps besides the config block, in its order.
constexpr Key Facts[] = {Firmware,      DisplayFirmware, Voltage, LoadedVoltage, LoggerTime, Bytes,
                         BytesInLogger, Digest,          Part,    Retrieved,     LowBattery, Zone};

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

std::string blockOf(const IniFile& file) {
  return std::string(file.value(ConfigBytesSection, RawConfigBytesKey).value_or(""));
}

IniFile blockAlone(const std::string& hex) {
  IniFile file("");
  file.setValue(ConfigBytesSection, RawConfigBytesKey, hex);
  return file;
}

std::string vardenIni(const std::string& text) {
  const IniFile source(text);
  IniFile file = blockAlone(blockOf(source));
  copy(source, Facts, file);
  return file.content();
}

/// The zone that the retrieval took for the logger's, where that is unknown.
TimeZoneRef zoneOfKey(std::string_view key) {
  const auto& zones = TimeZoneTools().Get_TimeZoneArray();
  const auto found = std::find_if(zones.begin(), zones.end(),
                                  [&](const TimeZoneRef& zone) { return zone && zone->KeyName == key; });
  return found != zones.end() ? *found : nullptr;
}

VardenRecord recordOf(const std::string& ini) {
  return Inside::of(*loggerFromConfig(blockOf(IniFile(ini)))).record;
}

}  // namespace

bool SavedRecording::isPendrel() const { return isPendrelConfig(Ini); }

std::int64_t SavedRecording::bytesInLogger() const {
  return isPendrel() ? pendrelBytes(Ini) : recordOf(Ini).ConfigBlock.NextMemoryAddress;
}

std::optional<double> SavedRecording::retrievedAt() const { return date(IniFile(Ini), Retrieved); }

bool SavedRecording::hasDigest() const { return !value(IniFile(Ini), Digest).empty(); }

bool SavedRecording::lowBattery() const { return value(IniFile(Ini), LowBattery) == "1"; }

bool SavedRecording::isPart() const {
  return value(IniFile(Ini), Part) == "1" && static_cast<std::int64_t>(Raw.size()) < bytesInLogger();
}

bool SavedRecording::isPartOfSame(const SavedRecording& other) const {
  if (!isPart() || isPendrel() != other.isPendrel() || Raw.size() >= other.Raw.size()) return false;
  return isPendrel() ? isBeginningOfSame(*this, other) : isSameRecording(recordOf(Ini), recordOf(other.Ini));
}

std::string SavedRecording::mismatch() const {
  const auto count = static_cast<std::int64_t>(Raw.size()), held = bytesInLogger();
  const IniFile file(Ini);
  const std::string_view bytes = value(file, Bytes), digest = value(file, Digest);
  if (count != held && !isPart())
    return std::to_string(count) + " bytes are there, and the logger held " + std::to_string(held);
  if (!bytes.empty() && bytes != std::to_string(count))
    return std::to_string(count) + " bytes are there, and " + std::string(bytes) + " were retrieved";
  const std::string found = digestOf(Raw);
  if (!digest.empty() && !equalsIgnoringCase(digest, found))
    return "the SHA-256 of the bytes is " + found + ", and that of what was retrieved " + std::string(digest);
  return isPendrel() ? setupMismatch(Ini) : std::string();
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
  putBytes(file, saved.Raw, static_cast<std::int64_t>(held));
  if (record.LastTimeLoggerRead > 0) put(file, Retrieved, isoDate(record.LastTimeLoggerRead, "Z"));
  put(file, LowBattery, std::int64_t{lowBattery});
  if (record.TimeZone && !Inside::of(*loggerFromConfig(record.RawConfigHex)).record.TimeZone)
    put(file, Zone, record.TimeZone->KeyName);
  saved.Ini = file.content();
  return saved;
}

SavedRecording savedRecording(const std::string& iniFile, const std::string& rawFile) {
  SavedRecording saved;
  const std::string text = iniTextOf(iniFile);
  const bool isPendrel = isPendrelConfig(text);
  if (!isPendrel) loggerFromIni(iniFile);
  saved.Ini = isPendrel ? pendrelIni(text) : vardenIni(text);
  naming(iniFile, [&] {
    if (isPendrel)
      openPendrel(saved);
    else
      openRecording(saved);
    saved.retrievedAt();
  });
  saved.Raw = rawFromFile(rawFile);
  const bool isOfNothing = isPendrel && saved.bytesInLogger() == 0;
  if (saved.Raw.empty() && !isOfNothing)
    throw Failure(FailureNumber::OutOfRange, "engineering.savedRecording",
                  rawFile + " holds no recording: it is empty");
  if (isPendrel) markOlderPart(saved);
  return saved;
}

std::shared_ptr<Class_VardenLogger> openRecording(const SavedRecording& recording) {
  if (recording.isPendrel()) refusePendrel("engineering.openRecording");
  const IniFile file(recording.Ini);
  auto logger = loggerFromConfig(blockOf(file));
  VardenRecord& record = Inside::of(*logger).record;
  const auto retrieved = recording.retrievedAt();
  // What the logger itself has told counts more than its block.
  if (retrieved || record.FirmwareVersion.empty()) take(file, Firmware, record.FirmwareVersion);
  take(file, DisplayFirmware, record.LCDfirmwareVersion);
  take(file, Voltage, record.BatteryVoltage);
  take(file, LoadedVoltage, record.LoadedBattVoltage);
  if (const auto time = date(file, LoggerTime); time && retrieved) {
    record.LastLoggerTime = *time;
    record.LastTimeLoggerRead = *retrieved;
  }
  if (!record.TimeZone) record.TimeZone = zoneOfKey(value(file, Zone));
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
  copy(IniFile(from), Facts, file);
  return file.content();
}

}  // namespace hy_wristlog::engineering
