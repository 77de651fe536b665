#include "picture/local_time.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <utility>

namespace wristlog::picture {
namespace {

std::string twoDigits(std::int64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); }

LocalSeconds secondOfDay(LocalSeconds time) { return time - dayOf(time) * DaySeconds; }

unsigned weekdayOf(std::int64_t day) {
  return std::chrono::weekday(std::chrono::sys_days(std::chrono::days(day))).c_encoding();
}

}  // namespace

LocalClock::LocalClock(std::vector<ClockOffset> offsets, std::int64_t dayBegins)
    : offsets_(std::move(offsets)), dayBegins_(dayBegins) {}

std::int64_t LocalClock::offsetAt(std::int64_t utc) const {
  const auto later = std::upper_bound(offsets_.begin(), offsets_.end(), utc,
                                      [](std::int64_t time, const ClockOffset& o) { return time < o.From; });
  return (later == offsets_.begin() ? 0 : std::int64_t{std::prev(later)->Minutes} * 60) - dayBegins_;
}

std::int64_t LocalClock::nextChange(std::int64_t utc) const {
  const std::int64_t now = offsetAt(utc);
  for (const ClockOffset& offset : offsets_)
    if (offset.From > utc && offset.Minutes * std::int64_t{60} - dayBegins_ != now) return offset.From;
  return std::numeric_limits<std::int64_t>::max();
}

std::int64_t dayOf(LocalSeconds time) {
  return time >= 0 ? time / DaySeconds : -((-time + DaySeconds - 1) / DaySeconds);
}

bool isWeekend(std::int64_t day) { return weekdayOf(day) % 6 == 0; }

std::string dateText(std::int64_t day) {
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
  return std::to_string(static_cast<int>(date.year())) + "-" +
         twoDigits(static_cast<unsigned>(date.month())) + "-" + twoDigits(static_cast<unsigned>(date.day()));
}

std::string dayText(std::int64_t day) {
  constexpr std::array Names{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  return std::string(Names[weekdayOf(day)]) + " " + dateText(day);
}

std::string clockText(LocalSeconds time) {
  const std::int64_t second = secondOfDay(time);
  return twoDigits(second / 3600) + ":" + twoDigits(second / 60 % 60);
}

std::string timeText(LocalSeconds time) {
  return dateText(dayOf(time)) + " " + clockText(time) + ":" + twoDigits(secondOfDay(time) % 60);
}

std::string durationText(std::int64_t seconds) {
  if (seconds < 60) return std::to_string(seconds) + " s";
  std::string text;
  const auto add = [&](std::int64_t value, const char* unit) {
    if (value != 0) text += (text.empty() ? "" : " ") + std::to_string(value) + unit;
  };
  const std::int64_t minutes = seconds / 60;
  add(minutes / 1440, " d");
  add(minutes / 60 % 24, " h");
  add(minutes % 60, " min");
  return text;
}

}  // namespace wristlog::picture
