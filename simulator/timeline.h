#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace hy_wristlog::simulator {

/// Nanoseconds since 1970-01-01 00:00:00 UTC: the simulated world's own time. A byte at 57600 baud takes
/// 190 972 of them, so a coarser unit would falsify the pace of a long transfer.
using Moment = std::chrono::nanoseconds;
using std::chrono::nanoseconds;

class Alarm;

/// Simulated time. It moves only when told to, and lets everything that falls due in between happen in the
/// order of time; what is due at the same moment happens in the order in which it was set.
class Timeline {
 public:
  explicit Timeline(Moment start) : now_(start), start_(start) {}
  Timeline(const Timeline&) = delete;
  Timeline& operator=(const Timeline&) = delete;

  Moment now() const { return now_; }
  nanoseconds elapsed() const { return now_ - start_; }

  /// An action may itself move time on; the outer call then goes on from there.
  void advanceTo(Moment target);
  void advance(nanoseconds duration) { advanceTo(now_ + duration); }
  /// Stops at the moment at which `reached` becomes true, and at the latest at `target`.
  void advanceTo(Moment target, const std::function<bool()>& reached);

  /// When the next thing is due; none when nothing is.
  std::optional<Moment> nextDue() const;

  /// Does something once, at a later moment.
  void after(nanoseconds delay, std::function<void()> action);

 private:
  friend class Alarm;

  bool fireNext(Moment limit);

  Moment now_, start_;
  std::uint64_t order_ = 0;
  std::vector<Alarm*> alarms_;
  std::multimap<std::pair<Moment, std::uint64_t>, std::function<void()>> once_;
};

/// Calls its owner at a moment that can be changed. Must not outlive its timeline.
class Alarm {
 public:
  Alarm(Timeline& timeline, std::function<void()> action);
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;
  ~Alarm();

  /// A moment in the past counts as now.
  void set(Moment at);
  void setAfter(nanoseconds delay) { set(timeline_.now() + delay); }
  void cancel() { pending_ = false; }
  bool pending() const { return pending_; }
  /// When it is due, if it is pending.
  Moment at() const { return at_; }

 private:
  friend class Timeline;

  Timeline& timeline_;
  std::function<void()> action_;
  Moment at_{};
  std::uint64_t order_ = 0;
  bool pending_ = false;
};

}  // namespace hy_wristlog::simulator
