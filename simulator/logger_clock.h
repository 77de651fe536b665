#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "simulator/saved_state.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// A logger's clock: whole seconds since 1970, UTC, from a quartz that may run fast or slow.
class LoggerClock {
 public:
  explicit LoggerClock(const Timeline& timeline)
      : timeline_(timeline), setAt_(timeline.now()), shown_(timeline.now()) {}

  /// Parts in a million by which it runs fast (below 0: slow), at most 100000 either way.
  void setDrift(double partsPerMillion) {
    shown_ = reading();
    setAt_ = timeline_.now();
    partsPerBillion_ = static_cast<std::int64_t>(std::clamp(partsPerMillion, -1e5, 1e5) * 1000.0);
  }

  void set(std::int64_t seconds) {
    setAt_ = timeline_.now();
    shown_ = std::chrono::seconds{seconds};
  }

  void persist(SavedState& state) {
    state.moment("clock.set_at", setAt_);
    state.moment("clock.shown", shown_);
    state.number("clock.drift", partsPerBillion_, -MostDrift, MostDrift);
  }

  Moment reading() const { return readingAt(timeline_.now()); }
  std::int64_t seconds() const { return std::chrono::floor<std::chrono::seconds>(reading()).count(); }

  /// The world's time at which this clock shows `seconds`.
  Moment whenShows(std::int64_t seconds) const {
    const Moment wanted = std::chrono::seconds{seconds};
    Moment when = setAt_ + (wanted - shown_);
    for (int round = 0; round < 40 && readingAt(when) != wanted; ++round) when += wanted - readingAt(when);
    while (readingAt(when) < wanted) when += nanoseconds{1};
    return when;
  }

 private:
  Moment readingAt(Moment when) const {
    const std::int64_t gone = (when - setAt_).count();
    const std::int64_t drift =
        gone / Billion * partsPerBillion_ + gone % Billion * partsPerBillion_ / Billion;
    return shown_ + nanoseconds{gone + drift};
  }

  static constexpr std::int64_t Billion = 1000000000, MostDrift = Billion / 10;

  const Timeline& timeline_;
  Moment setAt_, shown_;
  std::int64_t partsPerBillion_ = 0;
};

}  // namespace hy_wristlog::simulator
