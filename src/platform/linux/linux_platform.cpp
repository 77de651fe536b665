#include "platform/linux/linux_platform.h"

#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_cryptography.h"
#include "platform/linux/linux_device_tree.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/linux_serial_ports.h"
#include "platform/linux/linux_settings_store.h"
#include "platform/linux/linux_zones.h"

namespace hy_wristlog::platform {
namespace {

class LinuxPlatform final : public Platform {
 public:
  Clock& clock() override { return clock_; }
  SerialPorts& serialPorts() override { return serialPorts_; }
  DeviceTree& deviceTree() override { return deviceTree_; }
  SettingsStore& settings() override { return settings_; }
  ZoneRecords& zones() override { return zones_; }
  Environment& environment() override { return environment_; }
  Files& files() override { return files_; }
  CryptographicProvider& cryptography() override { return cryptography_; }

 private:
  LinuxClock clock_;
  LinuxEnvironment environment_;
  LinuxFiles files_;
  LinuxSerialPorts serialPorts_{environment_};
  LinuxDeviceTree deviceTree_{environment_};
  FileSettingsStore settings_{environment_, files_};
  LinuxZones zones_;
  LinuxCryptography cryptography_;
};

}  // namespace

std::shared_ptr<Platform> makeLinuxPlatform() { return std::make_shared<LinuxPlatform>(); }

}  // namespace hy_wristlog::platform
