#pragma once

#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace hy_wristlog::fake {

using platform::FileKind;
using platform::SystemError;

/// Time moves only when something waits.
class Clock : public platform::Clock {
 public:
  CivilTime utc() override { return {2024, 3, 5, 12, 0, 0, 0}; }
  CivilTime local() override { return utc(); }
  double timer() override { return Now; }
  void sleep(std::chrono::milliseconds duration) override {
    ++Sleeps;
    Now += static_cast<double>(duration.count()) / 1000;
  }
  void idle() override { Now += 0.001; }
  double Now = 86399;
  int Sleeps = 0;
};

/// In memory; `Refused` names paths and the error they give.
class Files : public platform::Files {
 public:
  platform::FileState state(const std::string& path) override {
    refuse("state:" + path);
    const std::string bare = path.size() > 1 && path.back() == '/' ? path.substr(0, path.size() - 1) : path;
    if (Folders.contains(bare)) return {FileKind::Folder};
    if (!Contents.contains(path)) return {};
    return {FileKind::File, ReadOnly.contains(path), Hidden.contains(path)};
  }
  std::string read(const std::string& path) override {
    refuse("read:" + path);
    if (Folders.contains(path)) throw SystemError{EISDIR};
    if (!Contents.contains(path)) throw SystemError{ENOENT};
    return Contents[path];
  }
  void write(const std::string& path, std::string_view content) override {
    refuse("write:" + path);
    if (!Folders.contains(folderOf(path))) throw SystemError{ENOENT};
    ++Writes;
    Contents[path] = content;
  }
  bool remove(const std::string& path) override {
    refuse("remove:" + path);
    return Contents.erase(path) > 0;
  }
  void makeFolder(const std::string& path, bool forEveryone) override {
    refuse("makeFolder:" + path);
    if (!Folders.contains(folderOf(path))) throw SystemError{ENOENT};
    Folders.insert(path);
    if (forEveryone) ForEveryone.push_back(path);
    refuse("open:" + path);
  }

  std::map<std::string, std::string> Contents;
  std::set<std::string> Folders = {"/", "."}, ReadOnly, Hidden;
  std::vector<std::string> ForEveryone;
  std::map<std::string, int> Refused;
  int Writes = 0;

 private:
  static std::string folderOf(const std::string& path) {
    const auto end = path.rfind('/');
    return end == std::string::npos ? "." : end == 0 ? "/" : path.substr(0, end);
  }
  void refuse(const std::string& operation) {
    if (const auto found = Refused.find(operation); found != Refused.end()) throw SystemError{found->second};
  }
};

struct Device {
  std::string HardwareId, Name;
  int NameFailures = 0;
};

class DeviceTree : public platform::DeviceTree {
 public:
  std::unique_ptr<platform::DeviceList> devicesOfClass(std::string_view guid) override;
  std::vector<Device> Devices;
  std::string FailingCall, LastClass;
  int NamesRead = 0;
};

class DeviceList : public platform::DeviceList {
 public:
  explicit DeviceList(DeviceTree& tree) : tree_(tree) {}
  bool hasInterface(std::size_t index) override {
    fail("hasInterface");
    return index < tree_.Devices.size();
  }
  void readInfo(std::size_t) override { fail("readInfo"); }
  std::string hardwareId(std::size_t index) override {
    fail("hardwareId");
    return tree_.Devices[index].HardwareId;
  }
  std::string friendlyName(std::size_t index) override {
    ++tree_.NamesRead;
    if (tree_.Devices[index].NameFailures-- > 0) throw SystemError{EIO};
    return tree_.Devices[index].Name;
  }

 private:
  void fail(std::string_view call) const {
    if (tree_.FailingCall == call) throw SystemError{EIO};
  }
  DeviceTree& tree_;
};

inline std::unique_ptr<platform::DeviceList> DeviceTree::devicesOfClass(std::string_view guid) {
  LastClass = guid;
  if (FailingCall == "devicesOfClass") throw SystemError{EIO};
  return std::make_unique<DeviceList>(*this);
}

class Settings : public platform::SettingsStore {
 public:
  using Values = std::map<std::string, platform::SettingValue>;
  bool keyExists(std::int32_t, std::string_view key) override { return keys().contains(std::string(key)); }
  void createKey(std::int32_t, std::string_view key) override { keys()[std::string(key)]; }
  bool deleteKey(std::int32_t, std::string_view key) override { return keys().erase(std::string(key)) > 0; }
  bool deleteValue(std::int32_t, std::string_view key, std::string_view name) override {
    return keys()[std::string(key)].erase(std::string(name)) > 0;
  }
  std::optional<platform::SettingValue> read(std::int32_t, std::string_view key,
                                             std::string_view name) override {
    const Values& values = keys()[std::string(key)];
    const auto found = values.find(std::string(name));
    if (found == values.end()) return std::nullopt;
    return found->second;
  }
  void write(std::int32_t, std::string_view key, std::string_view name,
             const platform::SettingValue& value) override {
    if (WriteError != 0) throw SystemError{WriteError};
    keys()[std::string(key)][std::string(name)] = value;
  }
  std::vector<std::string> valueNames(std::int32_t, std::string_view key) override {
    std::vector<std::string> names;
    for (const auto& [name, value] : keys()[std::string(key)]) names.push_back(name);
    return names;
  }
  std::vector<std::string> subkeys(std::int32_t, std::string_view) override {
    std::vector<std::string> names;
    for (const auto& [name, values] : keys()) names.push_back(name);
    return names;
  }

  std::map<std::string, Values> Keys;
  int Error = 0, WriteError = 0;

 private:
  std::map<std::string, Values>& keys() {
    if (Error != 0) throw SystemError{Error};
    return Keys;
  }
};

class Environment : public platform::Environment {
 public:
  std::string specialFolder(std::int32_t code) override {
    return code == 26 ? std::string("/home/u/.config\0rest", 20) : "";
  }
  std::string libraryFolder() override { return "/lib"; }
  std::string localeInfo(platform::LocaleItem item) override { return Locale[item]; }
  std::optional<std::string> variable(std::string_view name) override {
    if (name == "HOME") return "/home/u";
    return std::nullopt;
  }
  std::string userName() override { return "user"; }
  std::string domainName() override { return "domain"; }
  std::string computerName() override { return "computer"; }
  std::string errorText(std::int32_t number) override { return "words for " + std::to_string(number); }
  std::map<platform::LocaleItem, std::string> Locale;
};

class Cryptography : public platform::CryptographicProvider {
 public:
  std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) override {
    if (Error != 0) throw SystemError{Error};
    Hashed.assign(bytes.begin(), bytes.end());
    return {0xD4, 0x1D};
  }
  void randomBytes(std::span<std::uint8_t> into) override {
    if (Error != 0) throw SystemError{Error};
    for (std::uint8_t& byte : into) byte = Random;
  }
  std::vector<std::uint8_t> Hashed;
  std::uint8_t Random = 0xFF;
  int Error = 0;
};

class Host : public hy_wristlog::Host {
 public:
  void serveEvents() override { ++Served; }
  MessageBoxButton showMessageBox(std::string_view, std::string_view text, std::int32_t) override {
    Boxes.emplace_back(text);
    return MessageBoxButton::Ok;
  }
  int Served = 0;
  std::vector<std::string> Boxes;
};

class World : public platform::Platform {
 public:
  World() { setHost(TheHost); }
  Clock& clock() override { return TheClock; }
  platform::SerialPorts& serialPorts() override { std::abort(); }
  DeviceTree& deviceTree() override { return Tree; }
  Settings& settings() override { return Store; }
  platform::ZoneRecords& zones() override { std::abort(); }
  Environment& environment() override { return TheEnvironment; }
  Files& files() override { return TheFiles; }
  Cryptography& cryptography() override { return TheCryptography; }

  Clock TheClock;
  DeviceTree Tree;
  Settings Store;
  Environment TheEnvironment;
  Files TheFiles;
  Cryptography TheCryptography;
  std::shared_ptr<Host> TheHost = std::make_shared<Host>();
};

/// The thread works in this world while the object lives.
class InWorld {
 public:
  InWorld() : former_(platform::use(World_)) {}
  ~InWorld() { platform::use(former_); }
  InWorld(const InWorld&) = delete;
  InWorld& operator=(const InWorld&) = delete;
  World* operator->() const { return World_.get(); }

 private:
  std::shared_ptr<World> World_ = std::make_shared<World>();
  std::shared_ptr<platform::Platform> former_;
};

/// The number and description of the failure that an action ends with; 0 and nothing without one.
template <class Action>
std::pair<std::int32_t, std::string> failureOf(Action action) {
  try {
    action();
  } catch (const Failure& failure) {
    return {failure.Number, failure.Description};
  }
  return {};
}

}  // namespace hy_wristlog::fake
