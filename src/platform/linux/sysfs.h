#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hy_wristlog::platform {

struct UsbDevice {
  std::string Path;               ///< canonical folder
  std::string Vendor, ProductId;  ///< four upper-case hexadecimal digits
  std::string Release;            ///< the same, "0000" when not known
  std::string SerialNumber;       ///< empty when the device has none
  std::string Product;            ///< the product text, or a text of this library's where the device has none
};

struct UsbTerminal {
  std::string Name;  ///< "ttyUSB0"
  UsbDevice Device;
};

/// The USB part of a tree laid out as /sys is. Folders that are missing, devices with damaged attributes
/// and links that lead round in circles or out of the tree are passed over. In order of their names.
class Sysfs {
 public:
  explicit Sysfs(const std::string& root);

  std::vector<UsbDevice> usbDevices() const;
  std::vector<UsbTerminal> usbTerminals() const;

 private:
  std::optional<UsbDevice> deviceAt(const std::string& folder) const;
  std::optional<UsbDevice> deviceAbove(const std::string& folder) const;
  bool isInside(const std::string& path) const;

  std::string root_;  ///< canonical; empty when there is no such folder
};

}  // namespace hy_wristlog::platform
