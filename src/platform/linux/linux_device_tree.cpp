#include "platform/linux/linux_device_tree.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "base/ascii.h"
#include "platform/linux/declared_docks.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/port_numbers.h"
#include "platform/linux/sysfs.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {
namespace {

struct Device {
  std::string HardwareId, FriendlyName;
  std::vector<std::string> Names;
};

class FoundDevices final : public DeviceList {
 public:
  explicit FoundDevices(std::vector<Device> devices) : devices_(std::move(devices)) {}

  bool hasInterface(std::size_t index) override { return index < devices_.size(); }
  void readInfo(std::size_t index) override { device(index); }
  std::string hardwareId(std::size_t index) override { return device(index).HardwareId; }
  std::string friendlyName(std::size_t index) override { return device(index).FriendlyName; }
  std::vector<std::string> names(std::size_t index) override { return device(index).Names; }

 private:
  const Device& device(std::size_t index) const {
    if (index >= devices_.size()) raiseSystemError(ENODEV);
    return devices_[index];
  }

  std::vector<Device> devices_;
};

std::string hardwareId(const std::string& vendor, const std::string& product, const std::string& release) {
  return "USB\\VID_" + vendor + "&PID_" + product + "&REV_" + release;
}

/// "COM" in the device's own text becomes "Com": readers take the number after the first "COM" for the
/// port's.
std::string nameWithPort(std::string product, std::int32_t port) {
  for (std::size_t at = product.find("COM"); at != std::string::npos; at = product.find("COM", at))
    product.replace(at, 3, "Com");
  return port != 0 ? product + " (COM" + std::to_string(port) + ")" : product;
}

/// The name of a terminal's device file, all links followed: "ttyUSB0".
std::string ttyBehind(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::canonical(path, error);
  return error ? std::string{} : real.filename().string();
}

/// Declared without a product: the port alone has a number, as a Pendreader needs it.
bool isPlain(const DeclaredDock& dock) { return dock.VendorID.empty() && dock.ProductID.empty(); }

class Enumeration {
 public:
  Enumeration(std::vector<DeclaredDock> docks, Sysfs tree)
      : docks_(std::move(docks)), tree_(std::move(tree)) {}

  std::vector<Device> ofClass(const std::string& classGuid) {
    addDeclared(classGuid);
    if (classGuid == ComPortClass) addTerminals();
    if (classGuid == UsbDeviceClass) addUsbDevices();
    return std::move(devices_);
  }

 private:
  void addDeclared(const std::string& classGuid) {
    for (std::size_t i = 0; i < docks_.size(); ++i) {
      const DeclaredDock& dock = docks_[i];
      if (isPlain(dock) ? classGuid != PlainPortClass || dock.ComPort == 0
                        : dock.Class != classGuid || dock.VendorID.empty() || dock.ProductID.empty())
        continue;
      if (!dock.Device.empty() && !dock.isThere()) continue;
      const std::string tty = dock.Device.empty() ? std::string() : ttyBehind(dock.Device);
      const std::int32_t port = dock.ComPort != 0 || tty.empty() ? dock.ComPort : portOf(tty);
      devices_.push_back({isPlain(dock) ? "" : hardwareId(dock.VendorID, dock.ProductID, "0000"),
                          nameWithPort("Declared dock " + std::to_string(i + 1), port), namesOf(dock, tty)});
      if (!tty.empty()) declaredTtys_.push_back(tty);
    }
  }

  void addTerminals() {
    for (const UsbTerminal& terminal : tree_.usbTerminals())
      if (!isDeclared(terminal.Name))
        devices_.push_back({idOf(terminal.Device),
                            nameWithPort(terminal.Device.Product, portOf(terminal.Name)),
                            namesOf(terminal.Device, terminal.Name)});
  }

  void addUsbDevices() {
    const auto terminals = tree_.usbTerminals();
    for (const UsbDevice& device : tree_.usbDevices()) {
      const auto terminal = std::find_if(terminals.begin(), terminals.end(),
                                         [&](const UsbTerminal& t) { return t.Device.Path == device.Path; });
      if (terminal == terminals.end())
        devices_.push_back({idOf(device), device.Product, namesOf(device, "")});
      else if (!isDeclared(terminal->Name))
        devices_.push_back({idOf(device), nameWithPort(device.Product, portOf(terminal->Name)),
                            namesOf(device, terminal->Name)});
    }
  }

  /// `tty` may be empty.
  std::vector<std::string> namesOf(const UsbDevice& device, const std::string& tty) const {
    std::vector<std::string> names{"usb-" + device.Path.substr(device.Path.rfind('/') + 1)};
    if (!device.SerialNumber.empty()) names.push_back(device.SerialNumber);
    if (tty.empty()) return names;
    names.push_back("/dev/" + tty);
    for (const DeclaredDock& dock : docks_)
      if (isPlain(dock) && ttyBehind(dock.Device) == tty) names.push_back(dock.Name);
    return names;
  }

  std::vector<std::string> namesOf(const DeclaredDock& dock, const std::string& tty) const {
    std::vector<std::string> names{dock.Name};
    if (!dock.Device.empty()) names.push_back(dock.Device);
    for (const UsbTerminal& terminal : tree_.usbTerminals())
      if (terminal.Name == tty)
        for (const std::string& name : namesOf(terminal.Device, tty))
          if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    return names;
  }

  static std::string idOf(const UsbDevice& device) {
    return hardwareId(device.Vendor, device.ProductId, device.Release);
  }

  bool isDeclared(const std::string& tty) const {
    return std::find(declaredTtys_.begin(), declaredTtys_.end(), tty) != declaredTtys_.end();
  }

  /// A declaration gives its device a number, and takes that number away from every other device.
  std::int32_t portOf(const std::string& tty) const {
    for (const DeclaredDock& dock : docks_)
      if (dock.ComPort != 0 && ttyBehind(dock.Device) == tty) return dock.ComPort;
    const std::int32_t port = portNumberOfTty(tty);
    const bool taken = std::any_of(docks_.begin(), docks_.end(),
                                   [&](const DeclaredDock& dock) { return dock.ComPort == port; });
    return taken ? 0 : port;
  }

  std::vector<DeclaredDock> docks_;
  Sysfs tree_;
  std::vector<Device> devices_;
  std::vector<std::string> declaredTtys_;
};

std::string treeRoot() {
  const auto root = environmentVariable("HY_WRISTLOG_SYS");
  return root && !root->empty() ? *root : "/sys";
}

}  // namespace

std::unique_ptr<DeviceList> LinuxDeviceTree::devicesOfClass(std::string_view classGuid) {
  Enumeration enumeration{readDeclaredDocks(userDataFolder(environment_)).Docks, Sysfs{treeRoot()}};
  return std::make_unique<FoundDevices>(enumeration.ofClass(asciiLower(std::string{classGuid})));
}

std::vector<std::string> LinuxDeviceTree::troubles() {
  return readDeclaredDocks(userDataFolder(environment_)).Troubles;
}

}  // namespace hy_wristlog::platform
