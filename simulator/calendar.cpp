#include "simulator/calendar.h"

namespace hy_wristlog::simulator {

using namespace std::chrono;

namespace {

minutes standardOffset(const platform::ZoneRule& rule) { return minutes{-(rule.Bias + rule.StandardBias)}; }
minutes daylightOffset(const platform::ZoneRule& rule) { return minutes{-(rule.Bias + rule.DaylightBias)}; }

bool changesClocks(const platform::ZoneRule& rule) {
  return rule.DaylightDate.Month != 0 && rule.StandardDate.Month != 0;
}

seconds localMoment(const platform::ZoneTransition& change, std::int32_t yearNumber) {
  const month inMonth{static_cast<unsigned>(change.Month)};
  sys_days date;
  if (change.Year != 0) {
    date = year{yearNumber} / inMonth / day{static_cast<unsigned>(change.Day)};
  } else {
    const std::chrono::weekday onDay{static_cast<unsigned>(change.DayOfWeek)};
    date = change.Day >= 5 ? sys_days{year{yearNumber} / inMonth / onDay[last]}
                           : sys_days{year{yearNumber} / inMonth / onDay[static_cast<unsigned>(change.Day)]};
  }
  return date.time_since_epoch() + hours{change.Hour} + minutes{change.Minute} + seconds{change.Second};
}

}  // namespace

CivilTime civilTime(Moment moment, minutes offset) {
  const sys_time<nanoseconds> time{moment + offset};
  const sys_days date = floor<days>(time);
  const year_month_day ymd{date};
  const hh_mm_ss clock{time - date};
  CivilTime civil;
  civil.Year = int{ymd.year()};
  civil.Month = static_cast<std::int32_t>(unsigned{ymd.month()});
  civil.Day = static_cast<std::int32_t>(unsigned{ymd.day()});
  civil.Hour = static_cast<std::int32_t>(clock.hours().count());
  civil.Minute = static_cast<std::int32_t>(clock.minutes().count());
  civil.Second = static_cast<std::int32_t>(clock.seconds().count());
  civil.Millisecond = static_cast<std::int32_t>(duration_cast<milliseconds>(clock.subseconds()).count());
  return civil;
}

std::int64_t daylightStart(const platform::ZoneRule& rule, std::int32_t year) {
  if (!changesClocks(rule)) return 0;
  return (localMoment(rule.DaylightDate, year) - standardOffset(rule)).count();
}

std::int64_t daylightEnd(const platform::ZoneRule& rule, std::int32_t year) {
  if (!changesClocks(rule)) return 0;
  return (localMoment(rule.StandardDate, year) - daylightOffset(rule)).count();
}

minutes zoneOffset(const platform::ZoneRule& rule, Moment moment) {
  if (!changesClocks(rule)) return standardOffset(rule);
  const std::int32_t year = civilTime(moment, standardOffset(rule)).Year;
  const Moment begins = momentOf(daylightStart(rule, year));
  const Moment ends = momentOf(daylightEnd(rule, year));
  const bool daylight =
      begins < ends ? moment >= begins && moment < ends : !(moment >= ends && moment < begins);
  return daylight ? daylightOffset(rule) : standardOffset(rule);
}

std::int64_t secondsOf(std::int32_t yearNumber, unsigned monthNumber, unsigned dayNumber, std::int32_t hour,
                       std::int32_t minute, std::int32_t second) {
  const sys_days date = year{yearNumber} / month{monthNumber} / day{dayNumber};
  return duration_cast<seconds>(date.time_since_epoch()).count() + std::int64_t{hour} * 3600 +
         std::int64_t{minute} * 60 + second;
}

}  // namespace hy_wristlog::simulator
