#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/failure_numbers.h"
#include "platform/platform.h"
#include "simulator/dockable.h"
#include "simulator/fault.h"
#include "simulator/line.h"

namespace hy_wristlog::simulator {

struct DockOptions {
  DockKind Kind = DockKind::Quillander;
  std::int32_t ComPort = 33;
  /// Whether the friendly name ends with "(COMn)". By default it does, except for a Tolka dock of the first
  /// form.
  std::optional<bool> NameShowsPort{};
  std::string HardwareId{}, FriendlyName{};  ///< shown instead of the kind's own unless empty
  /// Where it is plugged in; empty for the next free place, "usb-1-1", of a Pendreader "Dock 1".
  std::string Place{};
  std::string SerialNumber{};
};

/// A failure that an operation of the port raises.
struct PortFault {
  std::int32_t Number = FailureNumber::PortStateFailure;
  Fault When{};
};

struct DockFaults {
  PortFault Open{}, Configure{};
  bool LockedUp = false;  ///< refuses every setting with PortStateFailure until it is plugged in again
  bool Held = false;      ///< another program has the port
};

/// A dock on a port: a serial line with its modem lines, and perhaps a logger in it. A Pendreader feeds its
/// logger from DTR and RTS: it is awake as long as both are on.
class SimulatedDock : public std::enable_shared_from_this<SimulatedDock> {
 public:
  SimulatedDock(Timeline& timeline, const DockOptions& options);
  SimulatedDock(const SimulatedDock&) = delete;
  SimulatedDock& operator=(const SimulatedDock&) = delete;

  DockFaults Faults;

  DockKind kind() const { return options_.Kind; }
  std::int32_t comPort() const { return options_.ComPort; }
  SimulatedLine& line() { return line_; }
  Dockable* logger() const { return logger_; }
  bool plugged() const { return plugged_; }
  bool isOpen() const { return open_; }

  /// Seats a logger. Throws std::logic_error when the dock is taken or the logger sits elsewhere; a logger of
  /// the wrong model fits but makes no contact.
  void insert(Dockable& logger);
  /// Takes the logger out; null when there was none.
  Dockable* pullOut();
  void plug();
  void unplug();
  /// Takes the logger out once `count` more bytes have passed the line, both directions together.
  void pullOutAfterBytes(std::uint64_t count);
  void unplugAfterBytes(std::uint64_t count);

  // As the device tree and the PC's port see it.
  std::string hardwareId() const;
  std::string friendlyName() const;
  std::vector<std::string> names() const;
  bool hasClass(std::string_view classGuid) const;
  std::unique_ptr<platform::SerialPort> open();

 private:
  friend class SimulatedPort;

  void configure(const platform::LineSettings& settings);
  void setDtr(bool on);
  void setRts(bool on);
  void closePort();
  bool contact() const { return logger_ != nullptr && logger_->fits(options_.Kind); }
  bool onTolka() const;
  void feed();
  void settle();

  Timeline& timeline_;
  DockOptions options_;
  SimulatedLine line_;
  Dockable* logger_ = nullptr;
  Alarm signal_;
  bool plugged_ = true, open_ = false, dtr_ = false, rts_ = false, dsr_ = false;
  Moment rtsRose_{};
  std::uint32_t plugCount_ = 0;
};

}  // namespace hy_wristlog::simulator
