#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/system_io.h"
#include "simulate/far_end.h"
#include "simulate/served_logger.h"

namespace wristlog {

/// Serves a logger on a pseudo-terminal. It has no modem lines: who opens it gets a logger that is awake, as
/// a program would make it by DTR and RTS. It keeps speed and stop bits, and the line goes at that speed.
class TerminalEnd : public FarEnd {
 public:
  /// Raises SystemError.
  explicit TerminalEnd(ServedLogger& logger);

  std::string device() const override { return device_; }
  void serve() override;
  void watch(std::vector<pollfd>& list) const override;

 private:
  void make();
  hy_wristlog::platform::Descriptor openSlave() const;
  bool isOpenElsewhere() const;
  void open();
  bool listens() const;
  void followSettings();
  void hear();
  void speak();

  ServedLogger& logger_;
  hy_wristlog::platform::Descriptor master_, openings_;
  std::string device_;
  bool refused_ = false;
  hy_wristlog::platform::LineSettings settings_;
  std::vector<std::uint8_t> toLogger_, toClient_;
  std::optional<hy_wristlog::simulator::Alarm> wakes_;
  hy_wristlog::simulator::Moment listensFrom_{};
};

}  // namespace wristlog
