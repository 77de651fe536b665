#include "platform/linux/settings_table.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "base/ascii.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::string_view HexDigits = "0123456789ABCDEF";
constexpr std::size_t RootLength = 8;

int hexDigit(char c) {
  const auto at = HexDigits.find(asciiUpper(c));
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

void appendHex(std::string& text, std::uint8_t byte) {
  text += HexDigits[byte >> 4U];
  text += HexDigits[byte & 15U];
}

std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = hexDigit(text[i]), low = hexDigit(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  return bytes;
}

std::string quoted(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (byte < 32 || byte == 127 || c == '%') {
      result += '%';
      appendHex(result, byte);
    } else {
      result += c;
    }
  }
  return result;
}

std::optional<std::string> unquoted(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return std::nullopt;
    const auto byte = bytesOfHex(text.substr(i + 1, 2));
    if (!byte) return std::nullopt;
    result += static_cast<char>(byte->front());
    i += 2;
  }
  return result;
}

/// "root\a\b" without empty names.
std::string pathOf(std::int32_t root, std::string_view key) {
  std::string path;
  const auto handle = static_cast<std::uint32_t>(root);
  for (int shift = 24; shift >= 0; shift -= 8) appendHex(path, static_cast<std::uint8_t>(handle >> shift));
  while (!key.empty()) {
    const std::string_view name = key.substr(0, key.find('\\'));
    key.remove_prefix(std::min(name.size() + 1, key.size()));
    if (!name.empty()) path.append("\\").append(name);
  }
  return path;
}

bool isPath(std::string_view text) {
  if (text.size() < RootLength || (text.size() > RootLength && text[RootLength] != '\\')) return false;
  return std::all_of(text.begin(), text.begin() + RootLength, [](char c) { return hexDigit(c) >= 0; }) &&
         text.find("\\\\") == std::string_view::npos && text.back() != '\\';
}

}  // namespace

bool IgnoringCase::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return static_cast<std::uint8_t>(asciiLower(x)) < static_cast<std::uint8_t>(asciiLower(y));
  });
}

SettingsTable SettingsTable::parse(std::string_view text) {
  SettingsTable table;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    std::array<std::string_view, 4> fields;
    std::size_t count = 0;
    while (count < fields.size()) {
      const std::size_t tab = count == fields.size() - 1 ? std::string_view::npos : line.find('\t');
      fields[count++] = line.substr(0, tab);
      if (tab == std::string_view::npos) break;
      line.remove_prefix(tab + 1);
    }
    const auto path = unquoted(fields[0]);
    if (!path || !isPath(*path)) continue;
    if (count == 1) table.make(*path);
    if (count != fields.size()) continue;
    const auto name = unquoted(fields[1]);
    auto data = bytesOfHex(fields[3]);
    SettingValue value;
    const auto [end, error] =
        std::from_chars(fields[2].data(), fields[2].data() + fields[2].size(), value.Type);
    if (!name || !data || error != std::errc{} || end != fields[2].data() + fields[2].size()) continue;
    value.Data = std::move(*data);
    table.make(*path)[*name] = std::move(value);
  }
  return table;
}

std::string SettingsTable::text() const {
  std::string result;
  for (const auto& [path, values] : keys_) {
    if (values.empty()) result += quoted(path) + "\n";
    for (const auto& [name, value] : values) {
      result += quoted(path) + "\t" + quoted(name) + "\t" + std::to_string(value.Type) + "\t";
      for (const std::uint8_t byte : value.Data) appendHex(result, byte);
      result += '\n';
    }
  }
  return result;
}

SettingsTable::Values& SettingsTable::make(const std::string& path) {
  for (auto slash = path.find('\\'); slash != std::string::npos; slash = path.find('\\', slash + 1))
    keys_.try_emplace(path.substr(0, slash));
  return keys_[path];
}

const SettingsTable::Values* SettingsTable::find(std::int32_t root, std::string_view key) const {
  static const Values None;
  const std::string path = pathOf(root, key);
  const auto found = keys_.find(path);
  if (found != keys_.end()) return &found->second;
  return path.size() == RootLength ? &None : nullptr;
}

bool SettingsTable::keyExists(std::int32_t root, std::string_view key) const {
  return find(root, key) != nullptr;
}

void SettingsTable::createKey(std::int32_t root, std::string_view key) { make(pathOf(root, key)); }

bool SettingsTable::deleteKey(std::int32_t root, std::string_view key) {
  const std::string path = pathOf(root, key);
  const std::string below = path + "\\";
  return std::erase_if(keys_, [&](const auto& entry) {
           return equalsIgnoringCase(entry.first, path) ||
                  equalsIgnoringCase(std::string_view{entry.first}.substr(0, below.size()), below);
         }) > 0;
}

bool SettingsTable::deleteValue(std::int32_t root, std::string_view key, std::string_view name) {
  const auto values = keys_.find(pathOf(root, key));
  if (values == keys_.end()) return false;
  const auto value = values->second.find(name);
  if (value == values->second.end()) return false;
  values->second.erase(value);
  return true;
}

std::optional<SettingValue> SettingsTable::read(std::int32_t root, std::string_view key,
                                                std::string_view name) const {
  const Values* values = find(root, key);
  if (values == nullptr) return std::nullopt;
  const auto found = values->find(name);
  return found != values->end() ? std::optional{found->second} : std::nullopt;
}

void SettingsTable::write(std::int32_t root, std::string_view key, std::string_view name,
                          const SettingValue& value) {
  make(pathOf(root, key))[std::string{name}] = value;
}

std::optional<std::vector<std::string>> SettingsTable::valueNames(std::int32_t root,
                                                                  std::string_view key) const {
  const Values* values = find(root, key);
  if (values == nullptr) return std::nullopt;
  std::vector<std::string> names;
  for (const auto& [name, value] : *values) names.push_back(name);
  return names;
}

std::optional<std::vector<std::string>> SettingsTable::subkeys(std::int32_t root,
                                                               std::string_view key) const {
  if (!keyExists(root, key)) return std::nullopt;
  const std::string above = pathOf(root, key) + "\\";
  std::vector<std::string> names;
  for (const auto& [path, values] : keys_) {
    if (path.size() <= above.size() || !equalsIgnoringCase(path.substr(0, above.size()), above)) continue;
    if (path.find('\\', above.size()) == std::string::npos) names.push_back(path.substr(above.size()));
  }
  return names;
}

}  // namespace hy_wristlog::platform
