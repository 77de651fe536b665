#pragma once

#include <cstdint>
#include <span>

#include "simulator/battery.h"
#include "simulator/config_block.h"
#include "simulator/firmware.h"
#include "simulator/logger_clock.h"
#include "simulator/memory.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// What a logger's sensors saw in one epoch.
struct EpochReading {
  double Counts = 0;                    ///< activity counts, calibrated
  std::int32_t Steps = 0;               ///< steps walked
  double Lux = 0;                       ///< illuminance
  double Red = 0, Green = 0, Blue = 0;  ///< irradiance in microwatts per square centimetre
  bool OffWrist = false;
  bool Button1 = false, Button2 = false;  ///< pressed during the epoch
  std::uint16_t OffWristFrequency = 0;
};

/// Where the readings come from: a desk, or a person who wears the logger.
class EpochSource {
 public:
  virtual ~EpochSource() = default;
  /// The epoch that begins at these UTC seconds, `length` seconds long.
  virtual EpochReading read(std::int64_t begins, std::int32_t length) = 0;
};

/// The parts of a logger that its recorder and its shell share.
struct LoggerParts {
  LoggerModel Model;
  simulator::Firmware Firmware;
  ConfigBlock Block;
  RecordingMemory Memory;
  LoggerClock Clock;
  simulator::Battery Battery;
  bool InStorage = false;  ///< put to sleep by command: records nothing
};

/// Bytes of one epoch's record; 0 when the model does not have the mode. Not the library's table of modes
/// (varden/logging_modes.h), so that a mistake there shows in the tests.
std::size_t recordLength(LoggerModel model, Mode mode);

/// The activity code whose step of the scale holds `counts`, 0 to 252.
std::uint8_t activityCode(double counts, std::uint8_t calibration);
/// The code, an exponent, that stands for an illuminance.
std::uint16_t lightCode(double lux);
/// The code, a 10-bit exponent, that stands for an irradiance in microwatts per square centimetre.
std::uint16_t colourCode(double irradiance, bool fineScale);

/// Acquisition: waits for the start time, writes a record every epoch and an event for whatever happens,
/// and ends at the stop time, by command, when the memory is full or when the battery is empty. Dock changes
/// are written while it records.
class Recorder {
 public:
  Recorder(Timeline& timeline, LoggerParts& parts);

  /// Where readings come from; null for a logger that lies still on the desk.
  void setSource(EpochSource* source);
  bool recording() const { return state_ == State::Recording; }
  bool waiting() const { return state_ == State::Waiting; }
  bool docked() const { return docked_; }

  /// Called when a new set-up was stored; the times in the block count again.
  void arm();
  /// Ends acquisition until the logger is set up again.
  void stop();
  /// Called when the stop time in the block, the storage mode or the clock was changed.
  void reconsider();
  void clockChanged();
  void dockChanged(bool docked);
  /// Loading goes on where the recorder was saved. Raises WrongState.
  void persist(SavedState& state);
  /// A power reset. The self test's answer is all zero when it passed.
  void powerReset(std::uint32_t selfTest);

 private:
  enum class State { Idle, Waiting, Recording };

  void tick();
  void begin(std::int64_t time);
  void end(std::int64_t time);
  void writeEpoch();
  void shutDown();
  std::uint8_t statusBits(const EpochReading& reading);
  void writeEvent(std::uint8_t bits, std::uint32_t value);
  void declareFull();
  void append(std::span<const std::uint8_t> bytes);
  std::size_t used() const { return parts_.Block.number(block::NextAddress); }
  std::size_t room() const;
  Mode mode() const { return static_cast<Mode>(parts_.Block.number(block::Mode)); }
  std::int32_t epochLength() const {
    return static_cast<std::int32_t>(parts_.Block.number(block::EpochLength));
  }
  std::int64_t stopTime() const { return parts_.Block.signedNumber(block::StopTime); }
  void scheduleTick();

  LoggerParts& parts_;
  EpochSource* source_;
  Alarm alarm_;
  State state_ = State::Idle;
  bool stopped_ = true;
  bool docked_ = false, leftDock_ = false;
  bool offWrist_ = false, lowBatteryTold_ = false;
  std::int64_t epochBegins_ = 0;
};

}  // namespace hy_wristlog::simulator
