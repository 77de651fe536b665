#include "platform/linux/linux_zones.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "platform/linux/posix_tz.h"
#include "platform/linux/system_io.h"
#include "platform/linux/tzif.h"
#include "platform/zone_catalogue.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t LongestZoneFile = 1 << 20;
/// Known without a tz database too.
constexpr const char* Utc = "UTC";

std::string databaseFolder() {
  const auto folder = environmentVariable("TZDIR");
  return folder && !folder->empty() ? *folder : "/usr/share/zoneinfo";
}

std::string zoneFile(std::string_view name) {
  if (name.empty()) return {};
  const std::string path =
      name.front() == '/' ? std::string{name} : databaseFolder() + "/" + std::string{name};
  return readSmallFile(path, LongestZoneFile).value_or("");
}

std::optional<ZoneRule> ruleOfText(std::string_view text) {
  const auto tz = parsePosixTz(text);
  return tz ? std::optional(zoneRuleFromTz(*tz)) : std::nullopt;
}

std::optional<ZoneRule> ruleOfFile(std::string_view file) {
  const auto footer = tzifFooter(file);
  return footer ? ruleOfText(*footer) : std::nullopt;
}

const CatalogueZone* findZone(std::string_view key) {
  for (const CatalogueZone& zone : zoneCatalogue())
    if (zone.Key == key) return &zone;
  return nullptr;
}

/// "(GMT-05:00) Eastern Time (US & Canada)", "(GMT) London", and "(?) London" without a rule.
std::string displayName(std::string_view description, const std::optional<ZoneRule>& rule) {
  std::string prefix = "(?) ";
  if (rule && rule->Bias == 0) {
    prefix = "(GMT) ";
  } else if (rule) {
    const int minutes = std::abs(rule->Bias);
    const std::array<int, 4> digits{minutes / 600 % 10, minutes / 60 % 10, minutes % 60 / 10, minutes % 10};
    prefix = rule->Bias > 0 ? "(GMT-" : "(GMT+";
    for (std::size_t i = 0; i < digits.size(); ++i) {
      if (i == 2) prefix += ':';
      prefix += static_cast<char>('0' + digits[i]);
    }
    prefix += ") ";
  }
  return prefix + std::string{description};
}

std::string nameInDatabase(const std::string& path) {
  const std::string folder = "/zoneinfo/";
  const auto at = path.rfind(folder);
  return at == std::string::npos ? std::string{} : path.substr(at + folder.size());
}

/// Whether a text can be a name in the database: it leads to no file outside.
bool isName(std::string_view text) {
  constexpr std::string_view Characters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_-+";
  return !text.empty() && text.front() != '/' && text.find_first_not_of(Characters) == std::string_view::npos;
}

std::string withoutSpaces(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
  return text;
}

}  // namespace

LinuxZones::LinuxZones(std::string etc) : etc_(std::move(etc)) {}

std::vector<std::string> LinuxZones::keys() {
  const auto& catalogue = zoneCatalogue();
  // Without a tz database the list is empty; zones without rules would be read as UTC.
  const bool readable = std::any_of(catalogue.begin(), catalogue.end(), [](const CatalogueZone& zone) {
    return ruleOfFile(zoneFile(zone.TzName)).has_value();
  });
  std::vector<std::string> result;
  if (readable)
    for (const CatalogueZone& zone : catalogue) result.emplace_back(zone.Key);
  return result;
}

ZoneRecord LinuxZones::read(std::string_view key) {
  ZoneRecord record;
  const CatalogueZone* zone = findZone(key);
  if (zone == nullptr) return record;
  record.Rule = ruleOfFile(zoneFile(zone->TzName));
  record.Display = displayName(zone->Description, record.Rule);
  record.Standard = key;
  record.Daylight = key;
  constexpr std::string_view Standard = "Standard";
  if (const auto at = record.Daylight.find(Standard); at != std::string::npos)
    record.Daylight.replace(at, Standard.size(), "Daylight");
  return record;
}

LinuxZones::MachineZone LinuxZones::zoneOfName(std::string name) const {
  MachineZone zone{std::move(name), {}, std::nullopt, {}};
  zone.File = zoneFile(zone.Name);
  zone.Rule = ruleOfFile(zone.File);
  return zone;
}

LinuxZones::MachineZone LinuxZones::zoneOfVariable(std::string value) const {
  if (!value.empty() && value.front() == ':') value.erase(0, 1);
  if (value.empty() || value == Utc) return {Utc, {}, ZoneRule{}, {}};
  MachineZone zone = zoneOfName(value);
  if (!zone.Rule) zone.Rule = ruleOfText(value);
  if (!zone.Rule)
    return {
        {}, {}, {}, "The variable TZ is \"" + value + "\", which is no zone of the tz database and no rule."};
  if (value.front() == '/') zone.Name = nameInDatabase(value);
  return zone;
}

LinuxZones::MachineZone LinuxZones::machineZone() const {
  if (auto variable = environmentVariable("TZ")) return zoneOfVariable(std::move(*variable));

  const std::string localtime = etc_ + "/localtime";
  MachineZone zone{{}, readSmallFile(localtime, LongestZoneFile).value_or(""), std::nullopt, {}};
  zone.Rule = ruleOfFile(zone.File);
  std::array<char, 4096> target{};
  const ssize_t length = ::readlink(localtime.c_str(), target.data(), target.size());
  if (length > 0) zone.Name = nameInDatabase(std::string(target.data(), static_cast<std::size_t>(length)));
  const bool isLink = length > 0;
  if (!zone.Rule && (isLink || fileExists(localtime)))
    return {{}, {}, {}, localtime + " cannot be read as a zone of the tz database."};
  if (!zone.Name.empty()) return zone;

  MachineZone named = zoneOfName(withoutSpaces(readSmallFile(etc_ + "/timezone", 4096).value_or("")));
  if (named.Rule && (!zone.Rule || named.File == zone.File)) return named;
  if (!zone.Rule) zone.Rule = ZoneRule{};
  return zone;
}

std::string LinuxZones::localStandardName() { return keyOf(machineZone()); }

std::optional<NamedZone> LinuxZones::named(std::string_view name) {
  if (!isName(name)) return std::nullopt;
  const MachineZone zone = zoneOfName(std::string(name));
  if (!zone.Rule) return std::nullopt;
  return NamedZone{*zone.Rule, tzifOutlivesRule(zone.File) ? std::string() : keyOf(zone)};
}

std::string LinuxZones::localName() {
  std::string name = machineZone().Name;
  return isName(name) ? name : std::string();
}

std::string LinuxZones::trouble() { return machineZone().Trouble; }

std::string LinuxZones::keyOf(const MachineZone& machine) {
  for (const CatalogueZone& zone : zoneCatalogue())
    if (zone.TzName == machine.Name) return std::string{zone.Key};
  if (machine.Rule == ZoneRule{}) return "Greenwich Standard Time";
  if (!machine.File.empty())
    for (const CatalogueZone& zone : zoneCatalogue())
      if (zoneFile(zone.TzName) == machine.File) return std::string{zone.Key};
  for (const CatalogueZone& zone : zoneCatalogue())
    if (machine.Rule && ruleOfFile(zoneFile(zone.TzName)) == machine.Rule) return std::string{zone.Key};
  return {};
}

}  // namespace hy_wristlog::platform
