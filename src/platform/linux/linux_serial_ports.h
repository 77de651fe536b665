#pragma once

#include "platform/platform.h"
#include "platform/remote_address.h"

namespace hy_wristlog::platform {

/// Opens terminal devices and ports of other machines under COM port numbers. A device is held exclusively,
/// against other programs and against a second opening by this one, also for the superuser.
class LinuxSerialPorts final : public SerialPorts {
 public:
  explicit LinuxSerialPorts(Environment& environment) : environment_(environment) {}

  std::unique_ptr<SerialPort> open(std::int32_t number) override;
  std::unique_ptr<SerialPort> openDevice(const std::string& device) override;

 private:
  Environment& environment_;
};

/// Opens the terminal at a path, or the port at an address of another machine; `name` is its name in
/// failures.
std::unique_ptr<SerialPort> openSerialDevice(const std::string& device, const std::string& name,
                                             const TlsIdentity& identity = {});

}  // namespace hy_wristlog::platform
