#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// What the user's locale (LC_ALL, LC_TIME, LC_NUMERIC, LANG) says, without touching the program's own.
/// Empty in the C and POSIX locales and for a locale that is not installed.
std::string localePattern(LocaleItem item);

/// The date of a strftime format as a pattern ("%a %d %b %Y %T" gives "ddd dd MMM yyyy"): directives of the
/// time of day are left out, letters that stand for themselves get a "\" before them.
std::string datePatternFromStrftime(std::string_view format);

/// The same for the time of day: "%H:%M:%S" gives "Hh:Nn:Ss", "%I:%M:%S %p" gives "h:Nn:Ss tt".
std::string timePatternFromStrftime(std::string_view format);

}  // namespace hy_wristlog::platform
