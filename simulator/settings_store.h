#pragma once

#include <map>
#include <string>
#include <utility>

#include "platform/platform.h"

namespace hy_wristlog::simulator {

/// A settings store that lives and dies with its world. Writing makes the keys it needs; deleting a key
/// takes all below it along.
class MemorySettings : public platform::SettingsStore {
 public:
  bool keyExists(std::int32_t root, std::string_view key) override;
  void createKey(std::int32_t root, std::string_view key) override;
  bool deleteKey(std::int32_t root, std::string_view key) override;
  bool deleteValue(std::int32_t root, std::string_view key, std::string_view name) override;
  std::optional<platform::SettingValue> read(std::int32_t root, std::string_view key,
                                             std::string_view name) override;
  void write(std::int32_t root, std::string_view key, std::string_view name,
             const platform::SettingValue& value) override;
  std::vector<std::string> valueNames(std::int32_t root, std::string_view key) override;
  std::vector<std::string> subkeys(std::int32_t root, std::string_view key) override;

  std::int32_t ErrorNumber = 0;       ///< unless 0, every member fails with it
  std::int32_t WriteErrorNumber = 0;  ///< unless 0, `write` fails with it

 private:
  struct Value {
    std::string Name;
    platform::SettingValue Content;
  };
  struct Key {
    std::string Path;
    std::map<std::string, Value> Values;
  };

  void check() const;
  Key* find(std::int32_t root, std::string_view key);

  std::map<std::pair<std::int32_t, std::string>, Key> keys_;
};

}  // namespace hy_wristlog::simulator
