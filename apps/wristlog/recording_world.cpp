#include "fixed_clock.h"

#include <charconv>

#include "hy_wristlog/failure.h"
#include "platform/linux/linux_platform.h"
#include "platform/wrapped_platform.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

class FixedClock : public platform::Clock {
 public:
  explicit FixedClock(const hy_wristlog::CivilTime& time) : time_(time) {}
  hy_wristlog::CivilTime utc() override { return time_; }
  hy_wristlog::CivilTime local() override { return time_; }
  double timer() override { return timer_; }
  void sleep(std::chrono::milliseconds duration) override {
    timer_ += std::chrono::duration<double>(duration).count();
  }
  void idle() override { sleep(std::chrono::milliseconds(1)); }

 private:
  hy_wristlog::CivilTime time_;
  double timer_ = 0;
};

class MachineAt : public platform::WrappedPlatform {
 public:
  explicit MachineAt(const hy_wristlog::CivilTime& time)
      : WrappedPlatform(platform::makeLinuxPlatform()), clock_(time) {}
  platform::Clock& clock() override { return clock_; }

 private:
  FixedClock clock_;
};

std::int32_t digits(const std::string& text, std::size_t at, std::size_t length) {
  std::int32_t value = 0;
  std::from_chars(text.data() + at, text.data() + at + length, value);
  return value;
}

}  // namespace

std::shared_ptr<platform::Platform> machineAt(double utc) {
  const std::string iso = hy_wristlog::engineering::isoDate(utc);
  if (iso.empty()) throw hy_wristlog::Failure(5, "wristlog", "The time lies outside the years 100 to 9999");
  return std::make_shared<MachineAt>(hy_wristlog::CivilTime{digits(iso, 0, 4), digits(iso, 5, 2),
                                                            digits(iso, 8, 2), digits(iso, 11, 2),
                                                            digits(iso, 14, 2), digits(iso, 17, 2), 0});
}

}  // namespace wristlog
