#include "base/dates.h"

#include <chrono>
#include <cmath>

#include "base/faults.h"
#include "base/numbers.h"

namespace hy_wristlog {
namespace {

using std::chrono::sys_days;

constexpr sys_days DayZero = std::chrono::year{1899} / 12 / 30;
constexpr std::int64_t FirstDay = (sys_days{std::chrono::year{100} / 1 / 1} - DayZero).count();
constexpr std::int64_t LastDay = (sys_days{std::chrono::year{9999} / 12 / 31} - DayZero).count();
constexpr auto DaySeconds = static_cast<std::int64_t>(SecondsPerDay);

std::int64_t floorDivide(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

/// Seconds from the start of day 0, on the linear scale.
std::int64_t secondsOf(double date) {
  const double seconds = std::round(linearFromDate(date) * SecondsPerDay);
  if (!(seconds >= static_cast<double>(FirstDay * DaySeconds) &&
        seconds < static_cast<double>((LastDay + 1) * DaySeconds)))
    fault::raise(fault::InvalidCall);
  return static_cast<std::int64_t>(seconds);
}

double dayNumber(std::int64_t year, std::int64_t month, std::int64_t day) {
  const std::int64_t carriedYear = year + floorDivide(month - 1, 12);
  const auto carriedMonth = static_cast<unsigned>(month - 1 - floorDivide(month - 1, 12) * 12 + 1);
  // The calendar's own limits; a carry of days from further out is not followed.
  if (carriedYear < -32767 || carriedYear > 32767) fault::raise(fault::InvalidCall);
  const sys_days first =
      std::chrono::year{static_cast<int>(carriedYear)} / static_cast<int>(carriedMonth) / 1;
  const std::int64_t days = (first - DayZero).count() + day - 1;
  if (days < FirstDay || days > LastDay) fault::raise(fault::InvalidCall);
  return static_cast<double>(days);
}

}  // namespace

double dateSerial(std::int32_t year, std::int32_t month, std::int32_t day) {
  if (year >= 0 && year <= 29)
    year += 2000;
  else if (year >= 30 && year <= 99)
    year += 1900;
  return dayNumber(year, month, day);
}

double timeSerial(std::int32_t hour, std::int32_t minute, std::int32_t second) {
  const std::int64_t seconds = std::int64_t{hour} * 3600 + std::int64_t{minute} * 60 + second;
  return static_cast<double>(seconds) / SecondsPerDay;
}

double addTime(double date, double time) { return dateFromLinear(linearFromDate(date) + time); }

double dateFromCivil(const CivilTime& time) {
  return addTime(dayNumber(time.Year, time.Month, time.Day), timeSerial(time.Hour, time.Minute, time.Second));
}

CivilTime civilFromDate(double date) {
  const std::int64_t seconds = secondsOf(date);
  const std::int64_t day = floorDivide(seconds, DaySeconds);
  const auto rest = static_cast<std::int32_t>(seconds - day * DaySeconds);
  const std::chrono::year_month_day civil{DayZero + std::chrono::days{day}};
  CivilTime time;
  time.Year = static_cast<int>(civil.year());
  time.Month = static_cast<std::int32_t>(static_cast<unsigned>(civil.month()));
  time.Day = static_cast<std::int32_t>(static_cast<unsigned>(civil.day()));
  time.Hour = rest / 3600;
  time.Minute = rest / 60 % 60;
  time.Second = rest % 60;
  return time;
}

std::int32_t weekday(double date) {
  const std::chrono::days day{floorDivide(secondsOf(date), DaySeconds)};
  return static_cast<std::int32_t>(std::chrono::weekday{DayZero + day}.c_encoding());
}

double datePart(double date) { return static_cast<double>(floorDivide(secondsOf(date), DaySeconds)); }

std::int64_t secondsBetween(double from, double to) { return secondsOf(to) - secondsOf(from); }

std::int64_t minutesBetween(double from, double to) {
  return floorDivide(secondsOf(to), 60) - floorDivide(secondsOf(from), 60);
}

double linearFromDate(double date) {
  if (!(date < 0)) return date;
  const double day = std::trunc(date);
  return day + (day - date);
}

double dateFromLinear(double linear) {
  if (!(linear < 0)) return linear;
  const double day = std::floor(linear);
  const double time = linear - day;
  // A time just short of midnight can round to a whole day, which would count a day backwards.
  return time < 1.0 ? day - time : day + 1.0;
}

double dateFromUnixSeconds(std::int32_t seconds) { return seconds / SecondsPerDay + UnixEpochDate; }

std::int32_t unixSecondsFromDate(double date) { return roundToInt32((date - UnixEpochDate) * SecondsPerDay); }

}  // namespace hy_wristlog
