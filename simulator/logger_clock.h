#pragma once

#include <chrono>
#include <cstdint>

#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// A logger's clock: whole seconds since 1970, UTC, from a quartz that may run fast or slow.
class LoggerClock {
 public:
  explicit LoggerClock(const Timeline& timeline)
      : timeline_(timeline), setAt_(timeline.now()), shown_(timeline.now()) {}

  /// Parts in a million by which it runs fast (below 0: slow).
  void setDrift(double partsPerMillion) {
    shown_ = reading();
    setAt_ = timeline_.now();
    rate_ = 1.0 + partsPerMillion * 1e-6;
  }

  void set(std::int64_t seconds) {
    setAt_ = timeline_.now();
    shown_ = std::chrono::seconds{seconds};
  }

  Moment reading() const {
    const double gone = static_cast<double>((timeline_.now() - setAt_).count()) * rate_;
    return shown_ + nanoseconds{static_cast<std::int64_t>(gone)};
  }
  std::int64_t seconds() const { return std::chrono::floor<std::chrono::seconds>(reading()).count(); }

  /// When the world is as far as this clock showing `seconds`, a nanosecond or two later for safety.
  Moment whenShows(std::int64_t seconds) const {
    const double ahead =
        static_cast<double>((Moment{std::chrono::seconds{seconds}} - shown_).count()) / rate_;
    return setAt_ + nanoseconds{static_cast<std::int64_t>(ahead)} + slack(ahead);
  }

 private:
  /// Large spans are rounded when they pass through a double.
  static nanoseconds slack(double span) { return nanoseconds{2 + static_cast<std::int64_t>(span * 1e-15)}; }

  const Timeline& timeline_;
  Moment setAt_, shown_;
  double rate_ = 1.0;
};

}  // namespace hy_wristlog::simulator
