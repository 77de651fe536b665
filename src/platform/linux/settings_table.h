#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace hy_wristlog::platform {

struct IgnoringCase {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

/// The keys and values of a settings store in memory, and as text: a line for each value, "root\key", name,
/// type and data in hexadecimal digits with tab characters between them; a line with "root\key" alone for a
/// key without values. The root is eight hexadecimal digits; control characters and "%" are written as "%XX".
class SettingsTable {
 public:
  /// Lines that are damaged are left out.
  static SettingsTable parse(std::string_view text);
  std::string text() const;

  bool keyExists(std::int32_t root, std::string_view key) const;
  void createKey(std::int32_t root, std::string_view key);
  /// Deletes the keys below it too.
  bool deleteKey(std::int32_t root, std::string_view key);
  bool deleteValue(std::int32_t root, std::string_view key, std::string_view name);
  std::optional<SettingValue> read(std::int32_t root, std::string_view key, std::string_view name) const;
  void write(std::int32_t root, std::string_view key, std::string_view name, const SettingValue& value);
  /// None when there is no such key; the roots themselves are always there.
  std::optional<std::vector<std::string>> valueNames(std::int32_t root, std::string_view key) const;
  std::optional<std::vector<std::string>> subkeys(std::int32_t root, std::string_view key) const;

 private:
  using Values = std::map<std::string, SettingValue, IgnoringCase>;

  const Values* find(std::int32_t root, std::string_view key) const;
  Values& make(const std::string& path);

  std::map<std::string, Values, IgnoringCase> keys_;  ///< by "root\key"; parents are always there
};

}  // namespace hy_wristlog::platform
