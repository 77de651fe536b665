#include "platform/linux/posix_tz.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace hy_wristlog::platform {
namespace {

constexpr std::int32_t SecondsADay = 86400, SecondsAnHour = 3600;
/// Any year of 365 days. Days of the year become the dates that they are in such a year.
constexpr std::int32_t CommonYear = 2001, LastDayOfYear = 364;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// Reads a rule text from its front. Every member returns false when the text does not go on as expected.
class TzReader {
 public:
  explicit TzReader(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }

  bool take(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool number(std::int32_t low, std::int32_t high, std::int32_t& value) {
    if (rest_.empty() || !isDigit(rest_.front())) return false;
    value = 0;
    while (!rest_.empty() && isDigit(rest_.front())) {
      value = value * 10 + (rest_.front() - '0');
      if (value > high) return false;
      rest_.remove_prefix(1);
    }
    return value >= low;
  }

  /// Letters, or anything between "<" and ">".
  bool name() {
    std::size_t length = 0;
    if (take('<')) {
      length = rest_.find('>');
      if (length == std::string_view::npos) return false;
      rest_.remove_prefix(length + 1);
    } else {
      while (length < rest_.size() && isLetter(rest_[length])) ++length;
      rest_.remove_prefix(length);
    }
    return length >= 3;
  }

  /// [+-]hh[:mm[:ss]] in seconds.
  bool time(std::int32_t& seconds) {
    const bool negative = take('-');
    if (!negative) take('+');
    std::int32_t hours = 0, minutes = 0, rest = 0;
    if (!number(0, 167, hours)) return false;
    if (take(':')) {
      if (!number(0, 59, minutes)) return false;
      if (take(':') && !number(0, 59, rest)) return false;
    }
    seconds = hours * SecondsAnHour + minutes * 60 + rest;
    if (negative) seconds = -seconds;
    return true;
  }

  bool offset(std::int32_t& eastOfGreenwich) {
    std::int32_t west = 0;
    if (!time(west) || west > SecondsADay || west < -SecondsADay) return false;
    eastOfGreenwich = -west;
    return true;
  }

  bool change(TzChange& change) {
    if (take('M')) {
      change.DateForm = TzChange::Form::WeekdayOfMonth;
      if (!number(1, 12, change.Month) || !take('.') || !number(1, 5, change.Week) || !take('.') ||
          !number(0, 6, change.Day))
        return false;
    } else if (take('J')) {
      change.DateForm = TzChange::Form::DayWithoutLeap;
      if (!number(1, 365, change.Day)) return false;
    } else {
      change.DateForm = TzChange::Form::DayOfYear;
      if (!number(0, 365, change.Day)) return false;
    }
    return !take('/') || time(change.Seconds);
  }

 private:
  std::string_view rest_;
};

using std::chrono::days;
using std::chrono::sys_days;

sys_days firstOfYear(std::int32_t year) {
  return std::chrono::year{year} / std::chrono::January / std::chrono::day{1};
}

sys_days dayOfChange(const TzChange& change, std::int32_t year) {
  namespace ch = std::chrono;
  switch (change.DateForm) {
    case TzChange::Form::WeekdayOfMonth: {
      const auto month = ch::year{year} / ch::month{static_cast<unsigned>(change.Month)};
      const ch::weekday weekday{static_cast<unsigned>(change.Day)};
      if (change.Week == 5) return month / weekday[ch::last];
      return month / weekday[static_cast<unsigned>(change.Week)];
    }
    case TzChange::Form::DayWithoutLeap:
      return firstOfYear(year) + days{change.Day - 1};
    case TzChange::Form::DayOfYear:
      break;
  }
  return firstOfYear(year) + days{std::min(change.Day, LastDayOfYear)};
}

std::int64_t secondsUtc(const TzChange& change, std::int32_t year, std::int32_t offset) {
  return std::int64_t{dayOfChange(change, year).time_since_epoch().count()} * SecondsADay + change.Seconds -
         offset;
}

/// RFC 9636 writes daylight time all year round as a period that ends when the next one starts.
bool lastsAllYear(const PosixTz& tz) {
  return secondsUtc(tz.DaylightEnd, CommonYear, tz.DaylightOffset) >=
         secondsUtc(tz.DaylightStart, CommonYear + 1, tz.StandardOffset);
}

ZoneTransition transition(const TzChange& change) {
  ZoneTransition result;
  if (change.DateForm == TzChange::Form::WeekdayOfMonth) {
    result.Month = static_cast<std::int16_t>(change.Month);
    result.DayOfWeek = static_cast<std::int16_t>(change.Day);
    result.Day = static_cast<std::int16_t>(change.Week);
  } else {
    constexpr std::int16_t FixedDate = 1;
    const std::chrono::year_month_day date{dayOfChange(change, CommonYear)};
    result.Year = FixedDate;
    result.Month = static_cast<std::int16_t>(static_cast<unsigned>(date.month()));
    result.Day = static_cast<std::int16_t>(static_cast<unsigned>(date.day()));
  }
  // The day of the change stays and the hour alone goes below 0 or above 23: "the day after the fourth
  // Thursday, at 2:00" is hour 26 of that Thursday. As a weekday of the month it would differ from year to
  // year.
  const std::int32_t hour = (change.Seconds - (change.Seconds < 0 ? SecondsAnHour - 1 : 0)) / SecondsAnHour;
  const std::int32_t rest = change.Seconds - hour * SecondsAnHour;
  result.Hour = static_cast<std::int16_t>(hour);
  result.Minute = static_cast<std::int16_t>(rest / 60);
  result.Second = static_cast<std::int16_t>(rest % 60);
  return result;
}

}  // namespace

std::optional<PosixTz> parsePosixTz(std::string_view text) {
  TzReader reader{text};
  PosixTz tz;
  if (!reader.name() || !reader.offset(tz.StandardOffset)) return std::nullopt;
  if (reader.atEnd()) return tz;
  if (!reader.name()) return std::nullopt;
  tz.HasDaylight = true;
  tz.DaylightOffset = tz.StandardOffset + 3600;
  if (reader.atEnd()) reader = TzReader{",M3.2.0,M11.1.0"};
  if (!reader.take(',')) {
    if (!reader.offset(tz.DaylightOffset)) return std::nullopt;
    if (reader.atEnd()) reader = TzReader{",M3.2.0,M11.1.0"};
    if (!reader.take(',')) return std::nullopt;
  }
  if (!reader.change(tz.DaylightStart) || !reader.take(',') || !reader.change(tz.DaylightEnd) ||
      !reader.atEnd())
    return std::nullopt;
  return tz;
}

ZoneRule zoneRuleFromTz(const PosixTz& tz) {
  ZoneRule rule;
  rule.Bias = -tz.StandardOffset / 60;
  if (!tz.HasDaylight || tz.DaylightOffset == tz.StandardOffset) return rule;
  if (lastsAllYear(tz)) {
    rule.Bias = -tz.DaylightOffset / 60;
    return rule;
  }
  rule.DaylightDate = transition(tz.DaylightStart);
  rule.StandardDate = transition(tz.DaylightEnd);
  std::int32_t daylightOffset = tz.DaylightOffset;
  if (daylightOffset < tz.StandardOffset) {
    rule.Bias = -daylightOffset / 60;
    daylightOffset = tz.StandardOffset;
    std::swap(rule.DaylightDate, rule.StandardDate);
  }
  rule.DaylightBias = -daylightOffset / 60 - rule.Bias;
  return rule;
}

}  // namespace hy_wristlog::platform
