#pragma once

#include <cstdint>
#include <optional>

#include "timezones/Class_TimeZoneInfo.h"

namespace hy_wristlog {

/// When a recording shall run, and what of it can be had.
struct TimeRequest {
  std::int32_t EpochLength = 0;  ///< seconds
  const Class_TimeZoneInfo* Zone = nullptr;
  bool Daylight = false;             ///< the zone's daylight time counts
  double EarliestUtc = 0;            ///< the logger's clock at this moment, UTC
  std::optional<double> StartLocal;  ///< none: as soon as possible
  std::optional<double> EndLocal;    ///< none: never
};

struct RecordingTimes {
  double StartUtc = 0, StartLocal = 0, EndUtc = 0;
  std::int32_t OffsetMinutes = 0;  ///< local less UTC at the start
};

/// The last moment that logger seconds can hold: 2038-01-19 03:14:07.
inline constexpr double NeverDate = 50424.13480324074;

/// Fits the wanted times to whole minutes (epochs of up to 60 seconds) or whole epochs. Returns 0, or the
/// return code for a start or an end that cannot be had. An end outside its limits is refused when a *start*
/// was given and moved to the limit otherwise; for epochs of up to 120 seconds the end "never" lies outside.
std::int32_t fitRecordingTimes(const TimeRequest& request, RecordingTimes& times);

/// Whether the workflows of the Varden family know the epoch.
bool isValidEpochLength(std::int32_t seconds);

/// The next full minute, or the next but one when the date has seconds.
double nextMinute(double date);

/// Seconds to 0.
double cutToMinute(double date);

}  // namespace hy_wristlog
