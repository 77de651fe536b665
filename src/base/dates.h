#pragma once

#include <cstdint>

/// The library's dates: a `double` that counts days from 30 December 1899, the time of day as fraction.
/// Before that day the fraction still counts forward in size: -1.25 is 29 December 1899, 06:00. Only these
/// functions know how a date is composed.
namespace hy_wristlog {

/// The date that means "unknown".
inline constexpr double UnknownDate = -1.0;
/// 1970-01-01.
inline constexpr double UnixEpochDate = 25569.0;
inline constexpr double MinutesPerDay = 1440.0;
inline constexpr double SecondsPerDay = 86400.0;

/// A moment on the calendar (proleptic Gregorian).
struct CivilTime {
  std::int32_t Year = 1899, Month = 12, Day = 30;
  std::int32_t Hour = 0, Minute = 0, Second = 0, Millisecond = 0;
};

/// The day of a year, month and day. Month and day outside their ranges carry over into the next greater
/// unit, so 31 February is in March and month 0 is the December before. Years 0 to 29 mean 2000 to 2029,
/// 30 to 99 mean 1930 to 1999. Raises InvalidCall outside the years 100 to 9999.
double dateSerial(std::int32_t year, std::int32_t month, std::int32_t day);

/// The fraction of a day; minutes and seconds outside 0 to 59 carry, negative ones too. May be negative or
/// above 1.
double timeSerial(std::int32_t hour, std::int32_t minute, std::int32_t second);

/// Adds a time of day (a fraction, also outside 0 to 1) to a date, correctly before 1899 too.
double addTime(double date, double time);

/// Fields carry as in `dateSerial` and `timeSerial`, years stand as they are; milliseconds are left out,
/// since dates carry whole seconds. Raises InvalidCall outside the years 100 to 9999.
double dateFromCivil(const CivilTime& time);

/// The date rounded to its nearest second, as calendar fields; Millisecond is 0. Raises InvalidCall outside
/// the years 100 to 9999 and for NaN.
CivilTime civilFromDate(double date);

/// Sunday 0 to Saturday 6. This function and all below that need a date's fields round it as `civilFromDate`
/// does, with the same fault.
std::int32_t weekday(double date);

/// The date without its time of day. A time that rounds up to midnight counts to the next day.
double datePart(double date);

/// Whole seconds from one date to another, both rounded to their second.
std::int64_t secondsBetween(double from, double to);
/// Minute boundaries passed from one date to another, both rounded to their second.
std::int64_t minutesBetween(double from, double to);

/// A linear day count (monotonic before 1899 too) and back; for differences and sums of dates.
double linearFromDate(double date);
double dateFromLinear(double linear);

/// The earliest date that 32-bit seconds since 1970 can express: 13 December 1901, 20:45:52.
inline constexpr double EarliestSecondsDate = 713.8651851851852;
/// Seconds since 1970-01-01, without leap seconds and zone, as a date.
double dateFromUnixSeconds(std::int32_t seconds);
/// The date to the nearest second, halves to even. Raises Overflow for a date beyond 2038-01-19 03:14:07 or
/// before EarliestSecondsDate.
std::int32_t unixSecondsFromDate(double date);

/// Compares whole seconds, since dates that were computed in different ways differ in their last digits.
inline bool isBefore(double a, double b) { return secondsBetween(a, b) > 0; }

}  // namespace hy_wristlog
