#include "varden/firmware.h"

#include <charconv>
#include <string>

#include "base/code_page.h"
#include "base/numbers.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

constexpr std::size_t VersionLength = 10;

template <class Number>
Number digits(std::string_view text) {
  Number value{};
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

/// The version of the record, when it is one that the library knows.
std::optional<FirmwareVersion> knownFirmware(const VardenRecord& record) {
  const auto version = parseFirmware(record.FirmwareVersion);
  if (!version) return {};
  const bool known = version->Major == 0
                         ? (version->Minor == 1 && version->Build >= 23) || version->Minor == 2
                     : version->Major == 1 ? version->Minor <= 1
                                           : false;
  return known ? version : std::nullopt;
}

}  // namespace

std::optional<FirmwareVersion> parseFirmware(std::string_view text) {
  const std::string ansi = ansiTextFromUtf8(text);
  if (ansi.size() < VersionLength) return {};
  const std::string_view view = ansi;
  const auto major = view.substr(0, 2), minor = view.substr(3, 2), build = view.substr(6, 4);
  if (!isDigits(major) || !isDigits(minor) || !isDigits(build)) return {};
  return FirmwareVersion{digits<std::uint8_t>(major), digits<std::uint8_t>(minor),
                         digits<std::int32_t>(build)};
}

bool isValidFirmware(const VardenRecord& record) { return knownFirmware(record).has_value(); }

bool hasMemoryFullFlag(const VardenRecord& record) {
  const auto version = knownFirmware(record);
  return version && (version->Major >= 1 || (version->Minor == 2 && version->Build >= 2));
}

bool hasLoadedVoltage(const VardenRecord& record) { return hasMemoryFullFlag(record); }

bool hasSleepMode(const VardenRecord& record) {
  const auto version = knownFirmware(record);
  return version && (version->Major >= 1 || version->Minor == 2);
}

bool hasNewEventFormat(const VardenRecord& record) {
  const auto version = knownFirmware(record);
  return version && (version->Major >= 1 || version->Minor == 2 || version->Build == 29);
}

bool hasNewLightScaleFactors(const VardenRecord& record) {
  const auto version = knownFirmware(record);
  return version && record.DeviceType == KR_QUILLANDER && version->Major >= 1 && version->Minor >= 1;
}

void parseVersionInfo(VardenRecord& record, std::string_view version) {
  constexpr std::size_t LcdPosition = 11, LcdLength = 5, LongestWithoutLcd = 15;
  const std::string ansi = ansiTextFromUtf8(version);
  if (record.DeviceType == KR_QUILLANDER) {
    record.FirmwareVersion =
        ansi.size() < VersionLength ? "" : utf8FromAnsiText(std::string_view(ansi).substr(0, VersionLength));
    record.LCDfirmwareVersion = ansi.size() > LongestWithoutLcd
                                    ? utf8FromAnsiText(std::string_view(ansi).substr(LcdPosition, LcdLength))
                                    : "";
  } else if (record.DeviceType == KR_TOLKA) {
    record.FirmwareVersion = utf8FromAnsiText(ansi);
    record.LCDfirmwareVersion.clear();
  }
}

bool VardenLogger::fncHasMemoryFullFlag() const { return hasMemoryFullFlag(record); }
bool VardenLogger::fncHasLoadedVoltage() const { return hasLoadedVoltage(record); }
bool VardenLogger::fncHasSleepMode() const { return hasSleepMode(record); }
bool VardenLogger::fncHasNewEventFormat() const { return hasNewEventFormat(record); }
bool VardenLogger::fncHasNewLightScaleFactors() const { return hasNewLightScaleFactors(record); }
bool VardenLogger::fncIsValidFirmware() const { return isValidFirmware(record); }

void VardenLogger::subParseVersionInfo(std::string_view version) { parseVersionInfo(record, version); }

}  // namespace hy_wristlog
