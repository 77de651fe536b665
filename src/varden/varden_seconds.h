#pragma once

#include <cstdint>

/// The time as a Varden logger keeps it.
namespace hy_wristlog {

/// Seconds since 1970-01-01, without leap seconds and zone, to the nearest second, halves to even.
/// `dateFromUnixSeconds` is the way back. Raises OutOfRange for a date before EarliestSecondsDate and
/// Overflow for one after 2038-01-19 03:14:07.
std::int32_t dateToLoggerSeconds(double date);

}  // namespace hy_wristlog
