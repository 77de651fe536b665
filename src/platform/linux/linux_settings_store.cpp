#include "platform/linux/linux_settings_store.h"

#include <cerrno>

#include "platform/folder_lock.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {
namespace {

/// Makes the folder and those above it that are missing.
void makeFolders(Files& files, const std::string& folder) {
  for (auto slash = folder.find('/', 1); slash != std::string::npos; slash = folder.find('/', slash + 1)) {
    const std::string above = folder.substr(0, slash);
    if (files.state(above).Kind == FileKind::Missing) files.makeFolder(above, false);
  }
  files.makeFolder(folder, false);
}

}  // namespace

std::string FileSettingsStore::folder() {
  std::string folder = userDataFolder(environment_);
  if (folder.empty()) raiseSystemError(ENOENT);
  return folder;
}

SettingsTable FileSettingsStore::load() {
  const std::string path = file();
  if (files_.state(path).Kind == FileKind::Missing) return {};
  return SettingsTable::parse(files_.readUpTo(Files::LongestText, path));
}

template <class Edit>
bool FileSettingsStore::change(const Edit& edit) {
  SettingsTable asItStands = load();
  if (!edit(asItStands)) return false;
  makeFolders(files_, folder());
  const auto lock = lockFolder(files_, folder());
  SettingsTable table = load();
  if (!edit(table)) return false;
  files_.write(file(), table.text());
  return true;
}

bool FileSettingsStore::keyExists(std::int32_t root, std::string_view key) {
  return load().keyExists(root, key);
}

void FileSettingsStore::createKey(std::int32_t root, std::string_view key) {
  change([&](SettingsTable& table) {
    if (table.keyExists(root, key)) return false;
    table.createKey(root, key);
    return true;
  });
}

bool FileSettingsStore::deleteKey(std::int32_t root, std::string_view key) {
  return change([&](SettingsTable& table) { return table.deleteKey(root, key); });
}

bool FileSettingsStore::deleteValue(std::int32_t root, std::string_view key, std::string_view name) {
  return change([&](SettingsTable& table) { return table.deleteValue(root, key, name); });
}

std::optional<SettingValue> FileSettingsStore::read(std::int32_t root, std::string_view key,
                                                    std::string_view name) {
  return load().read(root, key, name);
}

void FileSettingsStore::write(std::int32_t root, std::string_view key, std::string_view name,
                              const SettingValue& value) {
  change([&](SettingsTable& table) {
    table.write(root, key, name, value);
    return true;
  });
}

std::vector<std::string> FileSettingsStore::valueNames(std::int32_t root, std::string_view key) {
  auto names = load().valueNames(root, key);
  if (!names) raiseSystemError(ENOENT);
  return std::move(*names);
}

std::vector<std::string> FileSettingsStore::subkeys(std::int32_t root, std::string_view key) {
  auto names = load().subkeys(root, key);
  if (!names) raiseSystemError(ENOENT);
  return std::move(*names);
}

}  // namespace hy_wristlog::platform
