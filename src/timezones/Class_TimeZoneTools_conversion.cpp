#include <algorithm>
#include <cstdlib>

#include "base/ascii.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Registry.h"

namespace hy_wristlog {
namespace {

/// Bias at a date, with or without the daylight part.
std::int32_t biasOf(const Class_TimeZoneInfo& zone, bool daylight) {
  return fault::narrow<std::int16_t>(std::int64_t{zone.Bias} + (daylight ? zone.DaylightBias : 0));
}

double plusMinutes(double date, std::int32_t minutes) {
  CivilTime time = civilFromDate(date);
  time.Minute += minutes;
  return dateFromCivil(time);
}

/// The local date of a change in a year; below 1 when the zone has no such change.
double changeIn(std::int32_t year, const CLass_SystemTime& change) {
  const double day = change.wYear < 1 ? Class_TimeZoneTools::fncWeekDayToDate(year, change.wMonth,
                                                                              change.wDayOfWeek, change.wDay)
                                      : dateSerial(year, change.wMonth, change.wDay);
  return addTime(day, timeSerial(change.wHour, change.wMinute, change.wSecond));
}

double changeInUtc(double localChange, const Class_TimeZoneInfo& zone) {
  const double offset = Class_TimeZoneTools::fncCalcOffset(localChange, zone, true);
  CivilTime time = civilFromDate(localChange - offset / MinutesPerDay);
  time.Second = 0;
  return dateFromCivil(time);
}

}  // namespace

double Class_TimeZoneTools::fncGetGMTTime() { return dateFromCivil(platform::current().clock().utc()); }

std::int16_t Class_TimeZoneTools::fncGetGMTOffset() {
  const double utc = fncGetGMTTime();
  return roundToInt16((now() - utc) * MinutesPerDay);
}

double Class_TimeZoneTools::fncLocalTimeFromOffset(std::int16_t offset) {
  return plusMinutes(fncGetGMTTime(), offset);
}

double Class_TimeZoneTools::fncUTCToLocalDate(double utc, const Class_TimeZoneInfo& zone, bool daylight) {
  if (daylight) {
    const double candidate = plusMinutes(utc, -biasOf(zone, true));
    if (fncIsDayLight(candidate, zone)) return candidate;
  }
  return plusMinutes(utc, -biasOf(zone, false));
}

bool Class_TimeZoneTools::fncIsDayLight(double date, const Class_TimeZoneInfo& zone) {
  const std::int32_t year = civilFromDate(date).Year;
  const double start = changeIn(year, zone.DaylightDate);
  const double end = changeIn(year, zone.StandardDate);
  if (roundToInt32(start) == 0 && roundToInt32(end) == 0) return false;
  // In whole seconds: two ways to the same moment may differ in the last digit of the day count.
  const bool behindStart = secondsBetween(start, date) > 0;
  const std::int64_t untilEnd = secondsBetween(date, end);
  if (secondsBetween(start, end) > 0) return behindStart && untilEnd >= 0;
  return behindStart || untilEnd > 0;
}

double Class_TimeZoneTools::fncWeekDayToDate(std::int32_t year, std::int32_t month, std::int32_t weekday,
                                             std::int32_t occurrence) {
  double found = 0;
  if (month < 1) return found;
  std::int32_t count = 0;
  for (std::int32_t day = 1; day <= 31; ++day) {
    const double date = dateSerial(year, month, day);
    if (civilFromDate(date).Month > month) break;
    if (hy_wristlog::weekday(date) != weekday) continue;
    found = date;
    if (++count == occurrence) break;
  }
  return found;
}

std::int16_t Class_TimeZoneTools::fncCalcOffset(double date, const Class_TimeZoneInfo& zone, bool daylight) {
  return fault::narrow<std::int16_t>(-biasOf(zone, daylight && fncIsDayLight(date, zone)));
}

std::string Class_TimeZoneTools::fncFormatOffset(std::int16_t minutes) {
  const int size = std::abs(int{minutes}) % 1440;
  std::string text = minutes < 0 ? "-00:00" : "+00:00";
  text[1] = static_cast<char>('0' + size / 600);
  text[2] = static_cast<char>('0' + size / 60 % 10);
  text[4] = static_cast<char>('0' + size % 60 / 10);
  text[5] = static_cast<char>('0' + size % 10);
  return text;
}

std::int16_t Class_TimeZoneTools::fncHoursToMinutes(std::string_view text) {
  const std::string_view trimmed = trimBlanks(text);
  if (const auto colon = trimmed.find(':'); colon != std::string_view::npos) {
    const std::int16_t hours = roundToInt16(leadingNumber(trimmed.substr(0, colon)) * 60);
    return roundToInt16(hours + leadingNumber(trimmed.substr(std::max<std::size_t>(trimmed.size(), 2) - 2)));
  }
  return roundToInt16(parseNumber(text).value_or(0));
}

double Class_TimeZoneTools::fncGetDaylightStart(std::int32_t year, const Class_TimeZoneInfo& zone) {
  return changeInUtc(changeIn(year, zone.DaylightDate), zone);
}

double Class_TimeZoneTools::fncGetStandardStart(std::int32_t year, const Class_TimeZoneInfo& zone) {
  return changeInUtc(changeIn(year, zone.StandardDate), zone);
}

bool Class_TimeZoneTools::fncGetLocalAutoDST() {
  constexpr std::int32_t NumberType = 4;
  const RegistryValue value = Class_Registry{}.GetRegistrySetting(
      Class_Registry::LocalMachine, "System\\CurrentControlSet\\Control\\TimeZoneInformation",
      "DisableAutoDaylightTimeSet", NumberType, "999");
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number != 1;
  const auto* text = std::get_if<std::string>(&value);
  return text == nullptr || parseNumber(*text) != 1.0;
}

}  // namespace hy_wristlog
