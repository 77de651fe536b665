#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>

#include "platform/platform.h"
#include "simulator/fault.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

enum class Direction : std::uint8_t { ToLogger, ToPc };

/// What went wrong with the cable. The `Fault`s count bytes; the byte counts are those of `Traffic`.
struct LineFaults {
  Fault LoseToLogger{}, LoseToPc{};
  Fault AlterToLogger{}, AlterToPc{};
  std::uint8_t AlterMask = 0x04;  ///< the bits an altered byte has flipped
  Fault DoubleToLogger{}, DoubleToPc{};
  Fault DelayToLogger{}, DelayToPc{};  ///< the byte, and with it all after it, leaves only after `DelayFor`
  nanoseconds DelayFor = std::chrono::milliseconds{300};
  Fault OverrunToPc{};  ///< the byte is lost and the port counts an overrun
  /// The line is dead in both directions once so many bytes have passed.
  std::optional<std::uint64_t> CutAfterToLogger, CutAfterToPc, CutAfterTotal;
  bool CutEndsOnReopen = false;  ///< opening the port again mends the line
  /// `Action` runs once so many bytes have passed, both directions together.
  std::optional<std::uint64_t> ActAfterTotal;
  std::function<void()> Action;
};

struct Traffic {
  std::uint64_t BytesToLogger = 0, BytesToPc = 0;
  nanoseconds BusyToLogger{}, BusyToPc{};  ///< how long each direction was occupied
  std::uint64_t total() const { return BytesToLogger + BytesToPc; }
};

/// The serial line between the PC's port and the logger in the dock. Each direction carries one character
/// at a time, at the pace of its sender's settings.
class SimulatedLine {
 public:
  /// `far` are the settings of the logger's side.
  SimulatedLine(Timeline& timeline, const platform::LineSettings& far);

  LineFaults Faults;
  /// How long the adapter may hold received bytes back before it passes them on together.
  nanoseconds HoldBack{};
  /// Sees every byte that has passed, also one that then got lost.
  std::function<void(Direction, std::uint8_t)> Tap;
  std::size_t ReceiveCapacity = 65536;  ///< bytes that wait for the PC to read them; more are lost
  std::size_t TransmitCapacity = 4096;  ///< bytes that wait for the line

  const Traffic& traffic() const { return traffic_; }
  void resetTraffic() { traffic_ = {}; }
  bool cut() const { return cut_; }
  void cutNow() { cut_ = true; }
  /// Mends a cut line and forgets the orders to cut it.
  void reconnect();

  // The PC's side.
  void portOpened();
  void portClosed();
  void setPcSettings(const platform::LineSettings& settings) { pc_ = settings; }
  const platform::LineSettings& pcSettings() const { return pc_; }
  std::size_t write(std::span<const std::uint8_t> bytes);
  std::size_t outstanding() const { return toLogger_.Queue.size(); }
  std::size_t read(std::span<std::uint8_t> into);
  bool hasInput() const { return !received_.empty(); }
  void discardInput();
  /// Drops what the PC has written but what has not left yet.
  void discardOutput();
  platform::LineErrors takeErrors();

  // The logger's side.
  /// The settings hold for bytes that have not left yet and for all that is heard from now on.
  void setFarSettings(const platform::LineSettings& settings) { far_ = settings; }
  const platform::LineSettings& farSettings() const { return far_; }
  void listen(std::function<void(std::uint8_t)> listener) { listener_ = std::move(listener); }
  /// Queues bytes for the line after those that wait already; they leave once `delay` has passed.
  void send(std::span<const std::uint8_t> bytes, nanoseconds delay = nanoseconds{0});
  /// True when all that the logger sent has left.
  bool idle() const { return toPc_.Queue.empty(); }
  /// True when nothing is on its way in either direction.
  bool atRest() const { return idle() && toLogger_.Queue.empty() && heldBack_.empty(); }
  /// Drops what the logger has queued but not yet sent.
  void dropUnsent();

 private:
  struct Waiting {
    Moment NotBefore;
    std::uint8_t Byte;
  };
  struct Lane {
    Lane(Timeline& timeline, std::function<void()> arrival) : Arrival(timeline, std::move(arrival)) {}
    std::deque<Waiting> Queue;
    Alarm Arrival;
  };

  void startNext(Direction direction);
  void arrive(Direction direction);
  void deliverToLogger(std::uint8_t byte);
  void hearAtLogger(std::uint8_t byte);
  void deliverToPc(std::uint8_t byte);
  void hearAtPc(std::uint8_t byte);
  void receive(std::uint8_t byte);
  void passOn(std::uint8_t byte);
  void applyCuts();
  void actWhenDue();

  Timeline& timeline_;
  platform::LineSettings far_, pc_;
  Lane toLogger_, toPc_;
  bool open_ = false, cut_ = false;
  std::function<void(std::uint8_t)> listener_;
  std::deque<std::uint8_t> received_, heldBack_;
  Alarm release_;
  platform::LineErrors errors_;
  Traffic traffic_;
};

}  // namespace hy_wristlog::simulator
