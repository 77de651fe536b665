#pragma once

#include <string>
#include <string_view>

/// Dates as text for people and files. Needs no logger.
namespace hy_wristlog::engineering {

/// A date as ISO 8601: "2026-11-21T03:30:00"; `suffix` stands behind it. Empty for a date outside the years
/// 100 to 9999.
std::string isoDate(double date, std::string_view suffix = {});

/// "yyyy-mm-dd", with "Thh:mm[:ss]" or " hh:mm[:ss]" behind it, a "Z" allowed; or a day count. Raises 13 for
/// anything else and for days that are not on the calendar.
double dateFromText(std::string_view text);

}  // namespace hy_wristlog::engineering
