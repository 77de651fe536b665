#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace hy_wristlog {

/// A moment at which a zone changes its clocks. `wYear` below 1: the `wDay`-th (5: last) `wDayOfWeek` (Sunday
/// 0) of `wMonth` in every year; otherwise the day `wDay` of `wMonth`, in any year. Local clock time; an hour
/// below 0 or above 23 lies in a day before or after that one.
struct CLass_SystemTime {
  std::int16_t wYear = 0, wMonth = 0, wDayOfWeek = 0, wDay = 0;
  std::int16_t wHour = 0, wMinute = 0, wSecond = 0, wMilliseconds = 0;
};

/// One zone of the catalogue. A bias is the number of minutes from local time to UTC.
struct Class_TimeZoneInfo {
  std::int32_t Bias = 0;
  std::int32_t StandardBias = 0;  ///< stored, not used in conversions
  std::int32_t DaylightBias = 0;  ///< added to Bias in daylight time
  CLass_SystemTime StandardDate;
  CLass_SystemTime DaylightDate;
  std::string DisplayName, StandardName, DaylightName, MapID, KeyName;
  std::string Abbreviation;  ///< three letters, or empty for a zone that cannot be stored on a logger
};

using TimeZoneRef = std::shared_ptr<Class_TimeZoneInfo>;

}  // namespace hy_wristlog
