#pragma once

#include "platform/linux/settings_table.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {

/// Settings in the file "settings" of the user's data folder. Every member reads the file anew, and a change
/// replaces it whole under a lock, so programs see each other's changes and lose none. A change that gets no
/// lock within some seconds raises EBUSY. A missing file is an empty store. Deleting a key deletes the keys
/// below it too. Asking for the names in a missing key raises ENOENT.
class FileSettingsStore final : public SettingsStore {
 public:
  FileSettingsStore(Environment& environment, Files& files) : environment_(environment), files_(files) {}

  bool keyExists(std::int32_t root, std::string_view key) override;
  void createKey(std::int32_t root, std::string_view key) override;
  bool deleteKey(std::int32_t root, std::string_view key) override;
  bool deleteValue(std::int32_t root, std::string_view key, std::string_view name) override;
  std::optional<SettingValue> read(std::int32_t root, std::string_view key, std::string_view name) override;
  void write(std::int32_t root, std::string_view key, std::string_view name,
             const SettingValue& value) override;
  std::vector<std::string> valueNames(std::int32_t root, std::string_view key) override;
  std::vector<std::string> subkeys(std::int32_t root, std::string_view key) override;

 private:
  SettingsTable load();
  /// Saves the table when `edit` returns that it changed it. Returns what `edit` returned.
  template <class Edit>
  bool change(const Edit& edit);
  std::string folder();
  std::string file() { return folder() + "/settings"; }

  Environment& environment_;
  Files& files_;
};

}  // namespace hy_wristlog::platform
