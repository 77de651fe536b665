#include "simulator/settings_store.h"

namespace hy_wristlog::simulator {
namespace {

std::string folded(std::string_view text) {
  std::string lower{text};
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return lower;
}

std::string_view withoutSlashes(std::string_view key) {
  while (key.ends_with('\\')) key.remove_suffix(1);
  while (key.starts_with('\\')) key.remove_prefix(1);
  return key;
}

}  // namespace

void MemorySettings::check() const {
  if (ErrorNumber != 0) throw platform::SystemError{ErrorNumber};
}

MemorySettings::Key* MemorySettings::find(std::int32_t root, std::string_view key) {
  check();
  const auto found = keys_.find({root, folded(withoutSlashes(key))});
  return found == keys_.end() ? nullptr : &found->second;
}

bool MemorySettings::keyExists(std::int32_t root, std::string_view key) { return find(root, key) != nullptr; }

void MemorySettings::createKey(std::int32_t root, std::string_view key) {
  check();
  key = withoutSlashes(key);
  for (std::size_t end = 0; end != std::string_view::npos;) {
    end = key.find('\\', end + 1);
    const std::string_view path = key.substr(0, end);
    keys_.try_emplace({root, folded(path)}, Key{std::string{path}, {}});
  }
}

bool MemorySettings::deleteKey(std::int32_t root, std::string_view key) {
  check();
  const std::string path = folded(withoutSlashes(key));
  return std::erase_if(keys_, [&](const auto& entry) {
           const std::string& other = entry.first.second;
           return entry.first.first == root && (other == path || other.starts_with(path + "\\"));
         }) > 0;
}

bool MemorySettings::deleteValue(std::int32_t root, std::string_view key, std::string_view name) {
  Key* const found = find(root, key);
  return found != nullptr && found->Values.erase(folded(name)) > 0;
}

std::optional<platform::SettingValue> MemorySettings::read(std::int32_t root, std::string_view key,
                                                           std::string_view name) {
  const Key* const found = find(root, key);
  if (found == nullptr) return std::nullopt;
  const auto value = found->Values.find(folded(name));
  if (value == found->Values.end()) return std::nullopt;
  return value->second.Content;
}

void MemorySettings::write(std::int32_t root, std::string_view key, std::string_view name,
                           const platform::SettingValue& value) {
  if (WriteErrorNumber != 0) throw platform::SystemError{WriteErrorNumber};
  createKey(root, key);
  Value& slot = find(root, key)->Values[folded(name)];
  if (slot.Name.empty()) slot.Name = name;
  slot.Content = value;
}

std::vector<std::string> MemorySettings::valueNames(std::int32_t root, std::string_view key) {
  std::vector<std::string> names;
  if (const Key* const found = find(root, key))
    for (const auto& [folded, value] : found->Values) names.push_back(value.Name);
  return names;
}

std::vector<std::string> MemorySettings::subkeys(std::int32_t root, std::string_view key) {
  check();
  const std::string prefix = folded(withoutSlashes(key)) + "\\";
  std::vector<std::string> names;
  for (const auto& [id, entry] : keys_)
    if (id.first == root && id.second.starts_with(prefix) &&
        id.second.find('\\', prefix.size()) == std::string::npos)
      names.push_back(entry.Path.substr(prefix.size()));
  return names;
}

}  // namespace hy_wristlog::simulator
