#pragma once

#include <string>
#include <string_view>

/// Dates as text for people and files. Needs no logger.
namespace hy_wristlog::engineering {

/// A date as ISO 8601, "2026-11-21T03:30:00", with `suffix` after it. Empty for a date outside the years 100
/// to 9999.
std::string isoDate(double date, std::string_view suffix = {});

/// The date of "yyyy-mm-dd", which "Thh:mm[:ss]" or " hh:mm[:ss]" and a "Z" may follow, or of a day count.
/// Raises TypeMismatch for any other text and for days that are not on the calendar.
double dateFromText(std::string_view text);

}  // namespace hy_wristlog::engineering
