#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/dockable.h"
#include "simulator/recorder.h"
#include "simulator/varden_shell.h"
#include "simulator/wearer.h"

namespace hy_wristlog::simulator {

/// How a logger leaves the factory.
struct LoggerOptions {
  LoggerModel Model = LoggerModel::Vivid;
  std::string Firmware = "01.01.0007";
  std::string DisplayFirmware = "01.02";  ///< five characters; a Kestrin 2 has no display
  std::string SerialNumber = "V0012345";
  std::uint8_t MemoryUnits = 16;             ///< of 64 KiB
  std::optional<std::uint8_t> BlockVersion;  ///< none: the one that goes with the firmware
  std::uint8_t ActivityCalibration = 128;
  std::uint16_t LightCalibration = 1000, RedCalibration = 1100, GreenCalibration = 1200,
                BlueCalibration = 1300;
  double ClockDrift = 0;        ///< parts in a million
  std::int64_t ClockError = 0;  ///< seconds by which its clock is ahead
};

/// Those of the options that a logger does not keep in its config block.
void persist(SavedState& state, LoggerOptions& options);
/// How a Kestrin 2 leaves the factory.
LoggerOptions kestrin2Options();

/// A wrist-worn activity logger: config block, memory, clock, battery, sensors, and the shell that it runs
/// while it sits awake in a dock. It records whether docked or not, and only its own commands make it lose
/// what it recorded.
class SimulatedLogger : public Dockable {
 public:
  SimulatedLogger(Timeline& timeline, const LoggerOptions& options);

  LoggerFaults Faults;

  LoggerModel model() const { return parts_.Model; }
  ConfigBlock& block() { return parts_.Block; }
  RecordingMemory& memory() { return parts_.Memory; }
  LoggerClock& clock() { return parts_.Clock; }
  Battery& battery() { return parts_.Battery; }
  const Firmware& firmware() const { return parts_.Firmware; }
  const VardenShell& shell() const { return shell_; }
  /// What came in at the prompt, oldest first.
  const std::vector<std::string>& commands() const { return shell_.commands(); }
  void forgetCommands() { shell_.forgetCommands(); }
  bool recording() const { return recorder_.recording(); }
  bool waiting() const { return recorder_.waiting(); }
  bool inStorage() const { return parts_.InStorage; }
  /// What it has recorded.
  std::vector<std::uint8_t> recordedBytes() const;

  /// Sets it up as a PC would, memory emptied, without a dock.
  void setUp(const RecordingSetup& setup);
  /// Moves the world's time on while somebody wears the logger. It is taken out of its dock first and, with
  /// `Redock`, put back at the end. It records what its set-up tells it to.
  void wear(nanoseconds duration, const WearOptions& options = {});
  /// A power reset now; `selfTest` 0 means that the self test passed.
  void powerReset(std::uint32_t selfTest = 0);

  /// Saves or loads all but the faults. Loading takes a logger that is in no dock and was made with the
  /// options that were saved. Raises WrongState.
  void persist(SavedState& state);
  void putOn(const WearOptions& options) override;
  bool busyWithItself() const override { return shell_.erasing(); }
  bool fits(DockKind kind) const override {
    return kind != DockKind::Pendreader && (model() == LoggerModel::Vivid) == (kind == DockKind::Quillander);
  }

 private:
  void hear(std::uint8_t byte) override { shell_.receive(byte); }
  void attentionChanged() override { shell_.restart(); }
  void dockChanged(bool docked) override;
  std::chrono::minutes zone() const;
  void live(nanoseconds duration, const WearOptions& options);

  Timeline& timeline_;
  LoggerParts parts_;
  Recorder recorder_;
  VardenShell shell_;
  std::optional<WearOptions> wears_;
  std::optional<Wearer> wearer_;
};

}  // namespace hy_wristlog::simulator
