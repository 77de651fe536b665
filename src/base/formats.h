#pragma once

#include <string>
#include <string_view>

/// Dates and numbers as text, by pattern.
namespace hy_wristlog {

/// A date by a pattern. Letters in any case: d dd ddd dddd, m mm mmm mmmm (minutes directly behind hours),
/// n nn, y (day of the year) yy yyyy, h hh (12-hour with AMPM in the pattern, else 24-hour), s ss, and
/// AMPM, AM/PM, A/P, ttttt; c the general form; "\" and "" quote; other characters stand for themselves.
/// Names are English. ".000" behind seconds gives milliseconds as 000, since dates carry whole seconds. Fault
/// 5 outside the years 100 to 9999.
std::string formatDate(double date, std::string_view pattern);

/// A number by a pattern of 0, #, a decimal point and E+00; rounded half away from zero on 15 significant
/// digits. The decimal point is "." whatever the locale.
std::string formatNumber(double value, std::string_view pattern);

/// The shortest text of a number as it is joined to other text ("0.5", "-1", "1E+20"), 15 significant digits.
std::string textOf(double value);

}  // namespace hy_wristlog
