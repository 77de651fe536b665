#pragma once

#include <cerrno>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/linux_platform.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {

/// The machine with another clock, settings and zones.
class FakeWorld final : public Platform, Clock, SettingsStore, ZoneRecords {
 public:
  CivilTime Utc{2026, 7, 1}, Local{2026, 7, 1};
  std::optional<SettingValue> AutoDst;  ///< DisableAutoDaylightTimeSet
  bool SettingsRefuse = false;
  std::vector<std::pair<std::string, ZoneRecord>> Records;
  std::string LocalStandardName;
  int Reads = 0;
  bool MachineZones = false;

  Clock& clock() override { return *this; }
  SettingsStore& settings() override { return *this; }
  ZoneRecords& zones() override { return MachineZones ? machine_->zones() : *this; }
  SerialPorts& serialPorts() override { return machine_->serialPorts(); }
  DeviceTree& deviceTree() override { return machine_->deviceTree(); }
  Environment& environment() override { return machine_->environment(); }
  Files& files() override { return machine_->files(); }
  CryptographicProvider& cryptography() override { return machine_->cryptography(); }

 private:
  CivilTime utc() override { return Utc; }
  CivilTime local() override { return Local; }
  double timer() override { return 0; }
  void sleep(std::chrono::milliseconds) override {}
  void idle() override {}

  bool keyExists(std::int32_t, std::string_view) override { return false; }
  void createKey(std::int32_t, std::string_view) override {}
  bool deleteKey(std::int32_t, std::string_view) override { return false; }
  bool deleteValue(std::int32_t, std::string_view, std::string_view) override { return false; }
  std::optional<SettingValue> read(std::int32_t root, std::string_view key, std::string_view name) override {
    if (SettingsRefuse) throw SystemError{EACCES};
    const bool asked = root == INT32_MIN + 2 && name == "DisableAutoDaylightTimeSet" &&
                       key == "System\\CurrentControlSet\\Control\\TimeZoneInformation";
    return asked ? AutoDst : std::nullopt;
  }
  void write(std::int32_t, std::string_view, std::string_view, const SettingValue&) override {}
  std::vector<std::string> valueNames(std::int32_t, std::string_view) override { return {}; }
  std::vector<std::string> subkeys(std::int32_t, std::string_view) override { return {}; }

  std::vector<std::string> keys() override {
    std::vector<std::string> keys;
    for (const auto& record : Records) keys.push_back(record.first);
    return keys;
  }
  ZoneRecord read(std::string_view key) override {
    ++Reads;
    for (const auto& record : Records)
      if (record.first == key) return record.second;
    return {};
  }
  std::string localStandardName() override { return LocalStandardName; }

  std::shared_ptr<Platform> machine_ = makeLinuxPlatform();
};

/// Puts a FakeWorld in place of the thread's world for the life of this object.
class UseFakeWorld {
 public:
  UseFakeWorld() : former_(use(world_)) {}
  UseFakeWorld(const UseFakeWorld&) = delete;
  UseFakeWorld& operator=(const UseFakeWorld&) = delete;
  ~UseFakeWorld() { use(former_); }
  FakeWorld* operator->() const { return world_.get(); }

 private:
  std::shared_ptr<FakeWorld> world_ = std::make_shared<FakeWorld>();
  std::shared_ptr<Platform> former_;
};

}  // namespace hy_wristlog::platform
