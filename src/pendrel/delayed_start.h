#pragma once

#include <cstdint>
#include <string>

namespace hy_wristlog {

/// A span in quarter minutes and seconds.
struct Shortening {
  std::int32_t QuarterMinutes = 0, Seconds = 0;
};

/// How a logger is told when to start. From the moment of its release it waits a remainder of less than one
/// epoch and then whole epochs.
struct DelayedStart {
  std::int32_t Epochs = 0;  ///< 1 to 32896
  Shortening Shortened;
  double ReleaseTime = 0;  ///< local date

  /// Four digits: the epochs, counted down from 128.
  std::string epochWord() const;
  /// Four digits: quarter minutes, then seconds.
  std::string secondsWord() const;
};

/// The delay until a start, by the same clock as `now`; ten seconds are held back for the exchange. Raises
/// StartPassed for a start in the past, DelayOutOfBounds for one too near or too far, DivisionByZero for an
/// epoch of 0 seconds, Overflow for an epoch below 3 seconds, of which a day has more than 32767.
DelayedStart planDelayedStart(double start, double now, std::int16_t epochLength);

/// The span for a `remainder` of 0 or fewer seconds. Raises DelayOutOfBounds above 0.
Shortening shorteningFor(std::int32_t remainder);

/// Raises DelayOutOfBounds for a moment that has passed, Overflow for one beyond 24 days.
std::int32_t millisecondsToRelease(double releaseTime, double now);

}  // namespace hy_wristlog
