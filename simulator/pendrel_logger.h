#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/dockable.h"
#include "simulator/pendrel_parts.h"
#include "simulator/pendrel_recorder.h"
#include "simulator/pendrel_shell.h"
#include "simulator/wearer.h"

namespace hy_wristlog::simulator {

/// How a Pendrel logger leaves the factory. Its battery was put in on that day.
struct PendrelOptions {
  PendrelModel Model = PendrelModel::Checksums;
  std::optional<std::uint8_t> Firmware;  ///< below 144 without checksums, otherwise not; any with steps
  std::size_t MemoryKilobytes = 64;      ///< 8, 16, 32 or 64
  std::string SerialDigits = "1234";
  std::uint8_t ActivityCalibration = 128, Resets = 0;
  std::string BatteryDate;  ///< ddmmyy; empty: the day it leaves the factory
  double ClockDrift = 0;    ///< parts in a million
  /// What local time adds to UTC where the logger is worn; a bench sets it to its world's zone.
  std::optional<std::chrono::minutes> Zone;
};

/// Those of the options that a logger does not keep among its parts.
void persist(SavedState& state, PendrelOptions& options);

/// What a PC writes into a Pendrel logger before a recording.
struct PendrelSetup {
  std::string Subject = std::string(64, ' ');
  std::int32_t EpochLength = 30;  ///< seconds; multiples of 15 up to 945, and 2, 5 and 10
  std::int64_t StartTime = 0;     ///< UTC seconds since 1970
  bool CountsSteps = false;       ///< only the model with steps heeds it
};

/// The older family's activity logger: a memory, a battery, a quartz that counts epochs, and starred commands
/// that it obeys while a reader feeds it. It knows no time of day: a PC tells it how long to wait. It records
/// whether docked or not.
class SimulatedPendrel : public Dockable {
 public:
  /// Throws std::invalid_argument for options that no real logger has.
  SimulatedPendrel(Timeline& timeline, const PendrelOptions& options);

  PendrelFaults Faults;

  PendrelModel model() const { return parts_.Model; }
  PendrelMemory& memory() { return parts_.Memory; }
  /// What the PC has written and what the device record holds. Tests may change it.
  PendrelParts& parts() { return parts_; }
  /// The commands that came in whole, oldest first; a request for the prompt is an empty text.
  const std::vector<std::string>& commands() const { return shell_.commands(); }
  void forgetCommands() { shell_.forgetCommands(); }
  std::vector<std::string> setupLines() const { return shell_.setupLines(); }
  bool recording() const { return recorder_.recording(); }
  bool waiting() const { return recorder_.waiting(); }
  /// What it has recorded, without the header.
  std::vector<std::uint8_t> recordedBytes() const;

  /// Sets it up as a PC would, memory emptied, without a dock.
  void setUp(const PendrelSetup& setup);
  /// Moves the world's time on while somebody wears the logger. It is taken out of its dock first and, with
  /// `Redock`, put back at the end.
  void wear(nanoseconds duration, const WearOptions& options = {});
  /// Restarts the processor: recording or waiting ends, and one more reset is counted.
  void powerReset();

  /// Saves or loads all but the faults. Loading takes a logger that is in no dock and was made with the
  /// options that were saved. Raises WrongState.
  void persist(SavedState& state);
  void putOn(const WearOptions& options) override;
  bool busyWithItself() const override { return shell_.clearsOrRestarts(); }
  bool fits(DockKind kind) const override { return kind == DockKind::Pendreader; }

 private:
  void hear(std::uint8_t byte) override { shell_.receive(byte); }
  void attentionChanged() override;
  void dockChanged(bool docked) override { recorder_.dockChanged(docked); }
  void setBaud(std::int32_t baud);
  void befall(const Happening& happening);

  Timeline& timeline_;
  PendrelParts parts_;
  PendrelRecorder recorder_;
  PendrelShell shell_;
  std::chrono::minutes zone_;
  WearOptions wears_;
  std::optional<Wearer> wearer_;
};

}  // namespace hy_wristlog::simulator
