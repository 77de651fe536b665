#pragma once

#include <cstdint>
#include <string>

namespace hy_wristlog {

/// Quarter minutes and seconds.
struct Shortening {
  std::int32_t QuarterMinutes = 0, Seconds = 0;
};

/// How a logger is told when to start: it idles whole epochs, the span shortened by less than one of them,
/// from the moment at which it is released.
struct DelayedStart {
  std::int32_t Epochs = 0;  ///< 1 to 32896
  Shortening Shortened;
  double ReleaseTime = 0;  ///< local date

  /// Four digits: the epochs, counted down from 128.
  std::string epochWord() const;
  /// Four digits: quarter minutes, then seconds.
  std::string secondsWord() const;
};

/// The delay of a start on the same clock as `now`; ten seconds are held back for the exchange. Raises
/// StartPassed for a start in the past, DelayOutOfBounds for one too near or too far, fault 11 for an epoch
/// of 0 seconds, fault 6 for one that has more than 32767 to a day (below 3 seconds).
DelayedStart planDelayedStart(double start, double now, std::int16_t epochLength);

/// What takes `remainder` seconds, 0 or less, off a span. Raises DelayOutOfBounds above 0.
Shortening shorteningFor(std::int32_t remainder);

/// Raises DelayOutOfBounds for a moment that has passed, fault 6 for one beyond 24 days.
std::int32_t millisecondsToRelease(double releaseTime, double now);

}  // namespace hy_wristlog
