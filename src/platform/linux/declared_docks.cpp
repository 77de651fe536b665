#include "platform/linux/declared_docks.h"

#include <algorithm>
#include <charconv>

#include "base/ascii.h"
#include "platform/linux/port_numbers.h"
#include "platform/linux/system_io.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t LongestFile = 1 << 20;
constexpr std::size_t MostDocks = 256;
constexpr std::int32_t HighestDeclaredPort = 64;

std::string_view trim(std::string_view text) {
  constexpr std::string_view Blank = " \t\r";
  const auto first = text.find_first_not_of(Blank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(Blank) - first + 1);
}

std::string_view withoutQuotes(std::string_view text) {
  if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back())
    return text.substr(1, text.size() - 2);
  return text;
}

bool isDockSection(std::string_view name) {
  constexpr std::string_view Prefix = "dock ";
  if (name.size() <= Prefix.size() || !equalsIgnoringCase(name.substr(0, Prefix.size()), Prefix))
    return false;
  name.remove_prefix(Prefix.size());
  return std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string identifier(std::string_view text) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (text.size() > 4 || error != std::errc{} || end != text.data() + text.size()) return {};
  return std::string(4 - text.size(), '0') + asciiUpper(std::string{text});
}

std::int32_t comPort(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc{} && end == text.data() + text.size();
  return whole && value >= 1 && value <= HighestDeclaredPort ? value : 0;
}

void store(DeclaredDock& dock, std::string_view key, std::string_view value) {
  const auto keep = [](std::string& field, std::string text) {
    if (field.empty()) field = std::move(text);
  };
  if (equalsIgnoringCase(key, "VendorID")) keep(dock.VendorID, identifier(value));
  if (equalsIgnoringCase(key, "ProductID")) keep(dock.ProductID, identifier(value));
  if (equalsIgnoringCase(key, "Class")) keep(dock.Class, asciiLower(std::string{value}));
  if (equalsIgnoringCase(key, "Device") && value.starts_with('/') &&
      value.find('\0') == std::string_view::npos)
    keep(dock.Device, std::string{value});
  if (equalsIgnoringCase(key, "COMport") && dock.ComPort == 0) dock.ComPort = comPort(value);
}

std::string_view fileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

void complete(DeclaredDock& dock) {
  if (dock.Class.empty()) dock.Class = ComPortClass;
  if (dock.Device.empty() && dock.ComPort != 0) dock.Device = "/dev/" + ttyOfPortNumber(dock.ComPort);
  if (dock.ComPort == 0 && dock.Device.starts_with("/dev/tty"))
    dock.ComPort = portNumberOfTty(fileName(dock.Device));
}

}  // namespace

std::vector<DeclaredDock> parseDeclaredDocks(std::string_view ini) {
  std::vector<std::pair<std::string, DeclaredDock>> sections;
  DeclaredDock* dock = nullptr;
  if (ini.starts_with("\xEF\xBB\xBF")) ini.remove_prefix(3);
  while (!ini.empty()) {
    const std::size_t end = std::min(ini.find('\n'), ini.size());
    const std::string_view line = trim(ini.substr(0, end));
    ini.remove_prefix(std::min(end + 1, ini.size()));
    if (line.empty() || line.front() == ';' || line.front() == '#') continue;
    if (line.front() == '[') {
      dock = nullptr;
      const std::string_view name = trim(line.substr(1, line.find(']') - 1));
      if (!isDockSection(name) || line.find(']') == std::string_view::npos) continue;
      const std::string section = asciiLower(std::string{name});
      auto found =
          std::find_if(sections.begin(), sections.end(), [&](const auto& s) { return s.first == section; });
      if (found == sections.end()) {
        if (sections.size() == MostDocks) continue;
        found = sections.insert(sections.end(), {section, {}});
      }
      dock = &found->second;
    } else if (const auto equals = line.find('='); dock != nullptr && equals != std::string_view::npos) {
      store(*dock, trim(line.substr(0, equals)), withoutQuotes(trim(line.substr(equals + 1))));
    }
  }
  std::vector<DeclaredDock> docks;
  for (auto& [name, declared] : sections) {
    complete(declared);
    docks.push_back(std::move(declared));
  }
  return docks;
}

std::vector<DeclaredDock> readDeclaredDocks(const std::string& dataFolder) {
  const auto named = environmentVariable("HY_WRISTLOG_DOCKS");
  if ((!named || named->empty()) && dataFolder.empty()) return {};
  const std::string path = named && !named->empty() ? *named : dataFolder + "/Docks.INI";
  return parseDeclaredDocks(readSmallFile(path, LongestFile).value_or(""));
}

std::string devicePathOfPort(std::int32_t number, const std::vector<DeclaredDock>& docks) {
  for (const DeclaredDock& dock : docks)
    if (dock.ComPort == number && number != 0 && !dock.Device.empty()) return dock.Device;
  const std::string tty = ttyOfPortNumber(number);
  return tty.empty() ? tty : "/dev/" + tty;
}

}  // namespace hy_wristlog::platform
