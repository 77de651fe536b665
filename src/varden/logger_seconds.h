#pragma once

#include <cstdint>

/// The time as a Varden logger keeps it.
namespace hy_wristlog {

/// Seconds since 1970-01-01, without leap seconds and zone; `dateFromUnixSeconds` is the way back. To the
/// nearest second, halves to even. Raises 11503 for a date below 713.8651851851852, which is as far
/// back as 32 bits reach, and 6 for one beyond 2038-01-19 03:14:07.
std::int32_t dateToLoggerSeconds(double date);

}  // namespace hy_wristlog
