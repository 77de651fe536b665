#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// The devices of two classes: the COM port class holds the terminals that hang on a USB device, the USB
/// device interface class the USB devices themselves; both come from /sys, or from the folder that the
/// environment variable HY_WRISTLOG_SYS names (a recorded tree). Declared docks whose device exists stand
/// before them, in place of the same terminal found in the tree. What is damaged is left out. The only
/// failure raised here is an index out of range (ENODEV).
class LinuxDeviceTree final : public DeviceTree {
 public:
  explicit LinuxDeviceTree(Environment& environment) : environment_(environment) {}

  std::unique_ptr<DeviceList> devicesOfClass(std::string_view classGuid) override;
  std::vector<std::string> troubles() override;

 private:
  Environment& environment_;
};

}  // namespace hy_wristlog::platform
