#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// Opens terminal devices under COM port numbers. A port is held exclusively, against other programs and
/// against a second opening by this one, also for the superuser.
class LinuxSerialPorts final : public SerialPorts {
 public:
  explicit LinuxSerialPorts(Environment& environment) : environment_(environment) {}

  std::unique_ptr<SerialPort> open(std::int32_t number) override;
  std::unique_ptr<SerialPort> openDevice(const std::string& device) override;

 private:
  Environment& environment_;
};

/// Opens the terminal at `path`; `name` is its name in failures.
std::unique_ptr<SerialPort> openSerialDevice(const std::string& path, const std::string& name);

}  // namespace hy_wristlog::platform
