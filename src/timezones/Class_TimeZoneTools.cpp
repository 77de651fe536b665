#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "base/ascii.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "timezones/Form_Sort.h"
#include "timezones/abbreviations.h"
#include "tools/Class_Registry.h"

namespace hy_wristlog {
namespace {

constexpr const char* Module = "Class_TimeZoneTools";
constexpr std::string_view ZonesPath = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones";

std::string_view lastName(std::string_view keyPath) {
  const auto separator = keyPath.rfind('\\');
  return separator == std::string_view::npos ? keyPath : keyPath.substr(separator + 1);
}

CLass_SystemTime systemTime(const platform::ZoneTransition& change) {
  return {change.Year, change.Month,  change.DayOfWeek, change.Day,
          change.Hour, change.Minute, change.Second,    change.Milliseconds};
}

/// Four letters that sort in the order of the offset in "(GMT-05:00) ..."; "O" stands for zero. A name
/// without a readable offset counts as zero.
std::string sortKey(std::string_view displayName) {
  constexpr const char* Zero = "OOOO";
  constexpr std::size_t OffsetAt = 4;
  constexpr std::array<std::size_t, 4> Digits{1, 2, 4, 5};
  const auto end = displayName.find(')');
  if (end == std::string_view::npos || end <= OffsetAt + Digits.back()) return Zero;
  const std::string_view offset = displayName.substr(OffsetAt, end - OffsetAt);
  std::string key;
  for (const std::size_t at : Digits) {
    const int digit = offset[at] - '0';
    if (digit < 0 || digit > 9) return Zero;
    key += static_cast<char>(offset.front() == '-' ? 'O' - digit : 'O' + digit);
  }
  return key;
}

}  // namespace

bool Class_TimeZoneTools::fncPopulateTZICollection() {
  if (!timeZones_.empty()) return true;
  Procedure procedure{Module, "fncPopulateTZICollection"};
  return procedure.run([&] {
    std::vector<TimeZoneRef> found;
    if (!fncEnumSubKeys(Class_Registry::LocalMachine, ZonesPath, found))
      throw Failure{
          FailureNumber::NoZones, "Class_TimeZoneTools.fncPopulateTZICollection",
          "Unable to locate Time Zones information in Registry under the key: \r\n" + std::string{ZonesPath}};
    std::vector<std::string> keys;
    keys.reserve(found.size());
    for (const TimeZoneRef& zone : found) keys.push_back(sortKey(zone->DisplayName));
    std::vector<TimeZoneRef> sorted;
    sorted.reserve(found.size());
    for (const std::size_t index : Form_Sort{}.subDisplay(keys)) sorted.push_back(found[index]);
    timeZones_ = std::move(sorted);
    return true;
  });
}

bool Class_TimeZoneTools::fncEnumSubKeys(std::int32_t root, std::string_view keyPath,
                                         std::vector<TimeZoneRef>& zones) {
  if (root != Class_Registry::LocalMachine || !equalsIgnoringCase(keyPath, ZonesPath)) return false;
  const std::vector<std::string> keys = platform::current().zones().keys();
  for (const std::string& key : keys) zones.push_back(fncGetRegValueLTZI(std::string{keyPath} + '\\' + key));
  return !keys.empty();
}

TimeZoneRef Class_TimeZoneTools::fncGetRegValueLTZI(std::string_view keyPath) {
  Procedure procedure{Module, "fncGetRegValueLTZI"};
  return procedure.run([&] {
    const std::string_view key = lastName(keyPath);
    const platform::ZoneRecord record = platform::current().zones().read(key);
    auto zone = std::make_shared<Class_TimeZoneInfo>(record.Rule ? fncZoneOfRule(*record.Rule)
                                                                 : Class_TimeZoneInfo{});
    zone->DisplayName = fncStripNulls(record.Display);
    if (zone->DisplayName.starts_with('&')) zone->DisplayName.erase(0, 1);
    zone->StandardName = fncStripNulls(record.Standard);
    zone->DaylightName = fncStripNulls(record.Daylight);
    zone->MapID = fncStripNulls(record.MapID);
    zone->KeyName = key;
    zone->Abbreviation = fncGetAbbrevFromKey(key);
    return zone;
  });
}

Class_TimeZoneInfo Class_TimeZoneTools::fncZoneOfRule(const platform::ZoneRule& rule) {
  Class_TimeZoneInfo zone;
  zone.Bias = rule.Bias;
  zone.StandardBias = rule.StandardBias;
  zone.DaylightBias = rule.DaylightBias;
  zone.StandardDate = systemTime(rule.StandardDate);
  zone.DaylightDate = systemTime(rule.DaylightDate);
  return zone;
}

std::string Class_TimeZoneTools::fncGetRegValueStr(std::string_view keyPath, std::string_view valueName) {
  const platform::ZoneRecord record = platform::current().zones().read(lastName(keyPath));
  if (equalsIgnoringCase(valueName, "Display")) return fncStripNulls(record.Display);
  if (equalsIgnoringCase(valueName, "Std")) return fncStripNulls(record.Standard);
  if (equalsIgnoringCase(valueName, "Dlt")) return fncStripNulls(record.Daylight);
  if (equalsIgnoringCase(valueName, "MapID")) return fncStripNulls(record.MapID);
  return {};
}

std::string Class_TimeZoneTools::fncStripNulls(std::string_view text) { return std::string{cutAtNul(text)}; }

std::string Class_TimeZoneTools::fncGetAbbrevFromKey(std::string_view key) {
  for (const ZoneAbbreviation& row : zoneAbbreviations())
    if (row.Key == key) return std::string{row.Abbreviation};
  return {};
}

std::string Class_TimeZoneTools::fncGetKeyFromAbbrev(std::string_view abbreviation) {
  for (const ZoneAbbreviation& row : zoneAbbreviations())
    if (row.Abbreviation == abbreviation) return std::string{row.Key};
  return {};
}

TimeZoneRef Class_TimeZoneTools::fncGetTZIfromAbbrev(std::string_view abbreviation) {
  Procedure procedure{Module, "fncGetTZIfromAbbrev"};
  return procedure.run([&]() -> TimeZoneRef {
    procedure.statement([&] { return fncPopulateTZICollection(); });
    const auto found = std::find_if(timeZones_.begin(), timeZones_.end(), [&](const TimeZoneRef& zone) {
      return zone->Abbreviation == abbreviation;
    });
    return found == timeZones_.end() ? nullptr : *found;
  });
}

LocalZone Class_TimeZoneTools::fncLocalTimeZoneName() {
  LocalZone local;
  Procedure procedure{Module, "fncLocalTimeZoneName"};
  procedure.run([&] {
    procedure.statement([&] { local.Daylight = fncGetLocalAutoDST(); });
    procedure.statement([&] { local.Offset = fncGetGMTOffset(); });
    const std::string standardName =
        procedure.statement([] { return fncStripNulls(platform::current().zones().localStandardName()); });
    procedure.statement([&] { fncPopulateTZICollection(); });
    const std::string_view wanted = trimBlanks(standardName);
    if (wanted.empty()) return;
    for (const TimeZoneRef& zone : timeZones_) {
      if (trimBlanks(zone->StandardName) != wanted) continue;
      local.DisplayName = zone->DisplayName;
      local.Abbreviation = zone->Abbreviation;
      local.Zone = zone;
      return;
    }
  });
  return local;
}

Class_TimeZoneTools& TimeZoneTools() { return platform::current().objects().get<Class_TimeZoneTools>(); }

}  // namespace hy_wristlog
