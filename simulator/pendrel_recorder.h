#pragma once

#include <array>
#include <cstdint>

#include "simulator/pendrel_parts.h"
#include "simulator/recorder.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// The steps of a Pendrel logger's activity scale, which are the wider the longer the epoch.
class PendrelScale {
 public:
  PendrelScale(std::int32_t epochLength, std::uint8_t calibration);
  /// The code whose step holds so many calibrated counts, 0 to 253: 254 and 255 are no activity.
  std::uint8_t code(double counts) const;

 private:
  std::array<std::int32_t, 254> steps_{};
  double rawPerCount_;
};

/// A delayed start as the PC tells it: so many epochs of idling, the span of which is shortened.
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

  /// Null: it lies on the desk, where nothing moves.
  void setSource(EpochSource* source) { source_ = source; }
  /// Parts in a million by which the quartz runs fast.
  void setDrift(double partsPerMillion);
  bool recording() const { return state_ == State::Recording; }
  /// A delay was told; it may not run yet.
  bool waiting() const { return state_ == State::Told || state_ == State::Waiting; }

  /// Ends what there was; the pointer goes back into the header.
  void arm(const PendrelDelay& delay);
  /// The reader does not feed the logger any more.
  void released();
  /// Begins at a moment of the world, at once when it has gone by.
  void startAt(Moment moment);
  void stop();
  void dockChanged(bool docked) { docked_ = docked; }
  /// As the setup reports it: while it waits it counts the last 128 epochs up to the recording.
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
