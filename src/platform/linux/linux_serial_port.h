#pragma once

#include <string>

#include <linux/serial.h>

#include "platform/linux/system_io.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {

/// An open terminal device. A device without modem lines (a pseudo-terminal) takes them; of those that it
/// reads DSR follows DTR, as if a logger were always there, and the others are false. A hang-up is seen by
/// every member at once and raises Failure PortStateFailure.
class LinuxSerialPort final : public SerialPort {
 public:
  /// Takes over an open, non-blocking terminal that this program alone holds; both output lines go low, the
  /// settings are 9600,n,8,1 until others come. `name` is the port's name in failures.
  LinuxSerialPort(Descriptor device, std::string name);
  LinuxSerialPort(const LinuxSerialPort&) = delete;
  LinuxSerialPort& operator=(const LinuxSerialPort&) = delete;
  /// Gives queued bytes a short while to leave.
  ~LinuxSerialPort() override;

  void configure(const LineSettings& settings) override;
  std::size_t read(std::span<std::uint8_t> into) override;
  std::size_t write(std::span<const std::uint8_t> bytes) override;
  std::size_t outstanding() override;
  void discardInput() override;
  void setDtr(bool on) override;
  void setRts(bool on) override;
  ModemLines modemLines() override;
  LineErrors takeErrors() override;
  void awaitInput(std::chrono::microseconds longest) override;

 private:
  [[noreturn]] void raiseGone() const;
  void checkPresent() const;
  void setLine(int line, bool on);

  Descriptor device_;
  std::string name_;
  bool hasModemLines_ = false;
  bool dtr_ = false;
  bool countsErrors_ = false;
  serial_icounter_struct counted_{};
};

}  // namespace hy_wristlog::platform
