#pragma once

#include <array>
#include <cstdint>

#include "simulator/pendrel_parts.h"
#include "simulator/recorder.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// The steps of a Pendrel logger's activity scale. Longer epochs have wider steps.
class PendrelScale {
 public:
  PendrelScale(std::int32_t epochLength, std::uint8_t calibration);
  /// The code, 0 to 253, whose step holds so many calibrated counts. 254 and 255 do not stand for activity.
  std::uint8_t code(double counts) const;

 private:
  std::array<std::int32_t, 254> steps_{};
  double rawPerCount_;
};

/// A delayed start as the PC tells it: a number of epochs, and the seconds by which their span is shortened.
struct PendrelDelay {
  std::int32_t Epochs = 0;   ///< 1 to 32896
  std::int32_t Seconds = 0;  ///< by which the span is shortened, less than an epoch
};

/// Acquisition. A delay that was told begins to run when the reader stops feeding the logger, so that it does
/// not matter how long the PC goes on talking; recording begins when it has run out, `Epochs` epochs less
/// `Seconds` seconds later, and the first sample is written an epoch after that. A PC that wants to start at
/// S and means to let go at R therefore tells ceil((S - R) / epoch) epochs, and the rest as the seconds.
class PendrelRecorder {
 public:
  PendrelRecorder(Timeline& timeline, PendrelParts& parts);

  /// Where activity comes from; null for a logger that lies still on the desk.
  void setSource(EpochSource* source) { source_ = source; }
  /// Parts in a million by which the quartz runs fast.
  void setDrift(double partsPerMillion);
  bool recording() const { return state_ == State::Recording; }
  /// True once a delay was told, even while it does not run yet.
  bool waiting() const { return state_ == State::Told || state_ == State::Waiting; }

  /// Ends any recording or delay and notes the new one; the pointer goes back into the header.
  void arm(const PendrelDelay& delay);
  /// Called when the reader stops feeding the logger.
  void released();
  /// Begins the recording at a moment of the world's time, at once when that has passed.
  void startAt(Moment moment);
  void stop();
  /// Loading goes on where the recorder was saved. Raises WrongState.
  void persist(SavedState& state);
  void dockChanged(bool docked) { docked_ = docked; }
  /// The pointer as the setup reports it. While the logger waits it counts the last 128 epochs before the
  /// recording.
  std::int32_t pointer() const;

 private:
  enum class State { Idle, Told, Waiting, Recording };

  nanoseconds lasting(std::int64_t seconds) const;
  void wait(Moment until);
  void tick();
  void writeEpoch();

  Timeline& timeline_;
  PendrelParts& parts_;
  EpochSource* source_ = nullptr;
  Alarm alarm_;
  State state_ = State::Idle;
  PendrelDelay delay_;
  PendrelScale scale_;
  std::int32_t epochLength_ = 0;
  std::int64_t epochs_ = 0;
  Moment begins_{};
  std::int64_t nanosecondsPerSecond_ = 1000000000;
  bool docked_ = false;
};

}  // namespace hy_wristlog::simulator
