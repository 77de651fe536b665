#include "debugger/watched_world.h"

#include <algorithm>
#include <utility>

#include "platform/wrapped_platform.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

using std::chrono::milliseconds;

class WatchedClock : public platform::Clock, public platform::EventSource {
 public:
  WatchedClock(platform::Clock& inner, platform::Clock& machine, double speed, std::function<void()> attend)
      : inner_(inner),
        machine_(machine),
        simulated_(&inner != &machine),
        speed_(speed),
        attend_(std::move(attend)),
        innerStart_(inner.timer()),
        machineStart_(machine.timer()) {}

  hy_wristlog::CivilTime utc() override { return inner_.utc(); }
  hy_wristlog::CivilTime local() override { return inner_.local(); }
  double timer() override { return inner_.timer(); }

  void sleep(milliseconds duration) override {
    if (!simulated_) return letPass(machine_.timer() + std::chrono::duration<double>(duration).count());
    inner_.sleep(duration);
    keepPace();
  }

  void idle() override {
    inner_.idle();
    if (simulated_) keepPace();
    attend_();
  }

  /// A wait for input passes this clock by, but not the events.
  void serveEvents() override { simulated_ ? keepPace() : attend_(); }

 private:
  static constexpr milliseconds Slice{10};
  static constexpr double MostLag = 1;  ///< seconds; greater after the process was stopped for a while

  void keepPace() {
    attend_();
    if (speed_ <= 0) return;
    const double due = machineStart_ + (inner_.timer() - innerStart_) / speed_;
    const double now = machine_.timer();
    if (now > due + MostLag) machineStart_ += now - due;
    // Sleep for several simulated milliseconds at once, since one alone is too short to sleep exactly.
    if (due - now > 0.005) letPass(due);
  }

  void letPass(double end) {
    for (;;) {
      attend_();
      const double left = end - machine_.timer();
      if (left <= 0) return;
      machine_.sleep(
          std::clamp(milliseconds(static_cast<std::int64_t>(left * 1000 + 0.999)), milliseconds{1}, Slice));
    }
  }

  platform::Clock& inner_;
  platform::Clock& machine_;
  bool simulated_;
  double speed_;
  std::function<void()> attend_;
  double innerStart_, machineStart_;
};

class WatchedWorld : public platform::WrappedPlatform {
 public:
  WatchedWorld(const std::shared_ptr<platform::Platform>& world, platform::Clock& machine, double speed,
               std::function<void()> attend)
      : WrappedPlatform(world), clock_(world->clock(), machine, speed, std::move(attend)) {
    addEventSource(clock_);
  }
  /// Ends the library's objects first, since they may use the world while they end.
  ~WatchedWorld() override {
    objects().clear();
    removeEventSource(clock_);
  }
  WatchedWorld(const WatchedWorld&) = delete;
  WatchedWorld& operator=(const WatchedWorld&) = delete;

  platform::Clock& clock() override { return clock_; }

 private:
  WatchedClock clock_;
};

}  // namespace

std::shared_ptr<platform::Platform> makeWatchedWorld(const std::shared_ptr<platform::Platform>& world,
                                                     platform::Clock& machine, double speed,
                                                     std::function<void()> attend) {
  return std::make_shared<WatchedWorld>(world, machine, speed, std::move(attend));
}

}  // namespace wristlog
