#include "platform/linux/linux_clock.h"

#include <ctime>
#include <thread>

namespace hy_wristlog::platform {
namespace {

timespec read(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return now;
}

CivilTime civil(const std::tm& fields, long nanoseconds) {
  CivilTime time;
  time.Year = fields.tm_year + 1900;
  time.Month = fields.tm_mon + 1;
  time.Day = fields.tm_mday;
  time.Hour = fields.tm_hour;
  time.Minute = fields.tm_min;
  time.Second = fields.tm_sec < 60 ? fields.tm_sec : 59;
  time.Millisecond = static_cast<std::int32_t>(nanoseconds / 1000000);
  return time;
}

}  // namespace

CivilTime LinuxClock::utc() {
  const timespec now = read(CLOCK_REALTIME);
  std::tm fields{};
  ::gmtime_r(&now.tv_sec, &fields);
  return civil(fields, now.tv_nsec);
}

CivilTime LinuxClock::local() {
  const timespec now = read(CLOCK_REALTIME);
  std::tm fields{};
  ::tzset();
  ::localtime_r(&now.tv_sec, &fields);
  return civil(fields, now.tv_nsec);
}

double LinuxClock::timer() {
  const timespec now = read(CLOCK_MONOTONIC);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void LinuxClock::sleep(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }

void LinuxClock::idle() { sleep(std::chrono::milliseconds{1}); }

}  // namespace hy_wristlog::platform
