#pragma once

#include <cstdint>
#include <optional>

#include "timezones/Class_TimeZoneInfo.h"

namespace hy_wristlog {

/// When a recording shall run, and what limits it.
struct TimeRequest {
  std::int32_t EpochLength = 0;  ///< seconds
  const Class_TimeZoneInfo* Zone = nullptr;
  bool Daylight = false;             ///< the zone's daylight time counts
  double EarliestUtc = 0;            ///< the logger's clock now, UTC
  std::optional<double> StartLocal;  ///< none: as soon as possible
  std::optional<double> EndLocal;    ///< none: never
};

struct RecordingTimes {
  double StartUtc = 0, StartLocal = 0, EndUtc = 0;
  std::int32_t OffsetMinutes = 0;  ///< local time minus UTC at the start
};

/// The last moment that logger seconds can hold: 2038-01-19 03:14:07.
inline constexpr double NeverDate = 50424.13480324074;

/// Fits the wanted times to whole minutes (epochs of up to 60 seconds) or whole epochs. Returns 0, or
/// WrongStart or WrongEnd. An end outside its limits is refused when a *start* was given, and otherwise moved
/// to the limit; for epochs of up to 120 seconds the end "never" lies outside.
std::int32_t fitRecordingTimes(const TimeRequest& request, RecordingTimes& times);

/// The earliest end of a recording with this start, both UTC.
double earliestEnd(std::int32_t epochLength, double startUtc);

/// Whether the epoch length is one that the workflows of the Varden family take.
bool isValidEpochLength(std::int32_t seconds);

/// The next full minute; when the date has seconds, the one after that.
double nextMinute(double date);

/// The date with its seconds set to 0.
double cutToMinute(double date);

}  // namespace hy_wristlog
