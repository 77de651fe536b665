#pragma once

#include <cstdint>

namespace hy_wristlog {

/// Seconds since 1970-01-01 in 32 bits, as loggers keep the time, to the nearest second, halves to even. It
/// is the body of `module`'s fncDateToLoggerSeconds. Raises `tooEarly` for a date before EarliestSecondsDate
/// and Overflow for one beyond 2038-01-19 03:14:07.
std::int32_t loggerSecondsFromDate(double date, const char* module, std::int32_t tooEarly);

}  // namespace hy_wristlog
