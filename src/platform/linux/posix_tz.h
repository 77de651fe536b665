#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/platform.h"

/// The rule text of a zone: POSIX.1 TZ with the extensions of RFC 9636, section 3.3.1 (hours from -167
/// to 167, daylight time that lasts the whole year).
namespace hy_wristlog::platform {

struct TzChange {
  enum class Form : std::uint8_t { WeekdayOfMonth, DayWithoutLeap, DayOfYear };
  Form DateForm = Form::WeekdayOfMonth;
  std::int32_t Month = 0, Week = 0;
  std::int32_t Day = 0;         ///< weekday (Sunday 0), 1 to 365 without 29 February, or 0 to 365
  std::int32_t Seconds = 7200;  ///< local time of the change, since midnight
};

struct PosixTz {
  std::int32_t StandardOffset = 0;  ///< seconds to add to UTC
  bool HasDaylight = false;
  std::int32_t DaylightOffset = 0;
  TzChange DaylightStart, DaylightEnd;
};

/// None when the text is not a rule. A daylight name without changes has those of the United States.
std::optional<PosixTz> parsePosixTz(std::string_view text);

/// The rule as a zone record keeps it, the same for every year. Days of the year become the dates that they
/// are in years without a leap day; so in leap years, from March on, those that count 29 February come a day
/// late. A rule whose "daylight" time is the earlier one is turned round, so that DaylightBias is never
/// positive.
ZoneRule zoneRuleFromTz(const PosixTz& tz);

}  // namespace hy_wristlog::platform
