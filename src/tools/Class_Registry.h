#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hy_wristlog {

/// Empty, a text, a number or bytes.
using RegistryValue = std::variant<std::monostate, std::string, std::int32_t, std::vector<std::uint8_t>>;

/// One setting of the settings store: a root, a key path with "\" between its names, a value name and type.
class Class_Registry {
 public:
  static constexpr std::int32_t ClassesRoot = INT32_MIN;
  static constexpr std::int32_t CurrentUser = INT32_MIN + 1;
  static constexpr std::int32_t LocalMachine = INT32_MIN + 2;

  std::int32_t ClassKey = LocalMachine;
  std::string SectionKey;
  std::string ValueKey;
  /// 0, 1 and 6 text, 2 text with environment references, 3 bytes, 4 and 5 number (little-, big-endian).
  std::int32_t ValueType = 1;
  RegistryValue Default;

  /// These return false when the store refuses.
  bool Get_KeyExists() const;
  bool CreateKey() const;
  bool DeleteKey() const;
  bool DeleteValue() const;

  /// The value in the type it was stored with; `Default` when it cannot be read.
  RegistryValue Get_Value() const;
  /// Stores the value as `ValueType`. Raises the system's error number when the store refuses, TypeMismatch
  /// for a value that is not of that type and InvalidCall for an unknown type.
  void Let_Value(const RegistryValue& value) const;

  /// The names of the key's values, or of the keys below it.
  bool EnumerateValues(std::vector<std::string>& names, std::int32_t& count) const;
  bool EnumerateSections1(std::vector<std::string>& names, std::int32_t& count) const;

  /// Makes a program the one that opens files of an extension (with or without its dot).
  void CreateEXEAssociation(const std::string& programPath, const std::string& className,
                            const std::string& description, const std::string& extension);

  static std::int32_t SwapEndian(std::int32_t value);
  /// Every %NAME% that the environment knows becomes its value; others stay.
  static std::string ExpandEnvStr(std::string_view text);

  /// Reading and writing in one call each. They set the fields above.
  RegistryValue GetRegistrySetting(std::int32_t root, const std::string& key, const std::string& valueName,
                                   std::int32_t valueType, const RegistryValue& defaultValue);
  void SetRegistrySetting(std::int32_t root, const std::string& key, const std::string& valueName,
                          const RegistryValue& value, std::int32_t valueType);
};

}  // namespace hy_wristlog
