#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "simulator/timeline.h"
#include "simulator/wearer.h"

namespace hy_wristlog::simulator {

class SimulatedDock;
class SimulatedLine;

/// The Quillander dock is for the Vivid, the two Tolka docks are for the Kestrin 2. The first form of the
/// Tolka dock shows itself as a plain USB device, the others as COM ports. The Pendreader is for the Pendrel
/// family and hangs on a plain serial port that no device tree shows.
enum class DockKind : std::uint8_t { Quillander, TolkaFirst, TolkaSecond, Pendreader };

/// What a PC has done to a logger.
enum class Notice : std::uint8_t { Configured, Erased, Stopped, Downloaded };

/// What can sit in a dock: a logger of any family.
class Dockable {
 public:
  Dockable() = default;
  Dockable(const Dockable&) = delete;
  Dockable& operator=(const Dockable&) = delete;
  virtual ~Dockable() = default;

  SimulatedDock* dock() const { return dock_; }
  bool awake() const { return awake_; }
  /// Hears what a PC has done; may be empty.
  std::function<void(Notice)> OnNotice;
  /// True while it is busy with itself and hears nobody: it erases its memory or restarts.
  virtual bool busyWithItself() const = 0;
  /// From now on somebody wears it whenever it is in no dock.
  virtual void putOn(const WearOptions& options) = 0;

  /// Whether it makes contact in such a dock. It can be put into any dock.
  virtual bool fits(DockKind kind) const = 0;

 protected:
  /// Puts bytes on the dock's line; nothing unless it is awake.
  void say(std::span<const std::uint8_t> bytes, nanoseconds delay);
  SimulatedLine* line() const { return line_; }
  void tell(Notice notice) const {
    if (OnNotice) OnNotice(notice);
  }
  /// Takes the logger out of its dock, runs `action`, and with `redock` puts it back if it was in one.
  void away(bool redock, const std::function<void()>& action);

 private:
  friend class SimulatedDock;

  void seat(SimulatedDock& dock, SimulatedLine& line);
  void unseat();
  void wake();
  void doze();

  virtual void hear(std::uint8_t byte) = 0;
  /// Called when the logger woke up or fell asleep; either ends whatever it was sending or receiving.
  virtual void attentionChanged() = 0;
  virtual void dockChanged(bool docked) = 0;

  SimulatedDock* dock_ = nullptr;
  SimulatedLine* line_ = nullptr;
  bool awake_ = false;
};

}  // namespace hy_wristlog::simulator
