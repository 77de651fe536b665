#pragma once

#include <chrono>
#include <cstdint>

#include "platform/platform.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// The calendar fields of a moment, shifted by `offset` from UTC.
CivilTime civilTime(Moment moment, std::chrono::minutes offset = std::chrono::minutes{0});

/// What a zone adds to UTC at a moment, daylight time respected.
std::chrono::minutes zoneOffset(const platform::ZoneRule& rule, Moment moment);

/// The UTC seconds since 1970 at which a zone changes its clocks in a year; 0 when it never does.
std::int64_t daylightStart(const platform::ZoneRule& rule, std::int32_t year);
std::int64_t daylightEnd(const platform::ZoneRule& rule, std::int32_t year);

/// Seconds since 1970 of a UTC date and time of day.
std::int64_t secondsOf(std::int32_t year, unsigned month, unsigned day, std::int32_t hour = 0,
                       std::int32_t minute = 0, std::int32_t second = 0);

inline Moment momentOf(std::int64_t seconds) { return std::chrono::seconds{seconds}; }

}  // namespace hy_wristlog::simulator
