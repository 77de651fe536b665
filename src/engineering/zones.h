#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"

namespace hy_wristlog {
struct Class_TimeZoneInfo;
}

/// The zone catalogue, and local time where a logger was worn.
namespace hy_wristlog::engineering {

struct ZoneView {
  std::string Abbreviation, Key, DisplayName, StandardName;
  std::string IanaName;           ///< of the zone of the tz database that its rule is from
  std::int32_t Bias = 0;          ///< minutes from local time to UTC
  std::int32_t DaylightBias = 0;  ///< added in daylight time
  bool HasDaylight = false;
  bool DaylightNow = false;
  std::int32_t OffsetNow = 0;  ///< minutes to add to UTC at this moment
  bool Local = false;          ///< the machine's own zone
};

/// The zone catalogue in its order.
std::vector<ZoneView> zones();

/// How far local time where a logger was worn was ahead of UTC, from a moment on.
struct OffsetPeriod {
  double FromUtc = 0;
  std::int32_t Minutes = 0;
};

/// The offsets of the logger's zone between two moments: the first one from `fromUtc` on, each later one from
/// a change of the clocks on. Daylight time counts when the logger adjusts for it.
std::vector<OffsetPeriod> offsetPeriods(const Class_VardenLogger& logger, double fromUtc, double toUtc);

/// The same for a Pendrel logger: its offset at its start, and the changes of the zone that it names,
/// provided that this zone had that offset then.
std::vector<OffsetPeriod> offsetPeriods(const Class_Pendrel& logger, double fromUtc, double toUtc);
/// The same for a zone of the catalogue, by its letters, with daylight time. Raises UnknownZone for others.
std::vector<OffsetPeriod> offsetPeriods(const std::string& abbreviation, double fromUtc, double toUtc);
/// When the logger's recording started; the unknown date (-1) when it does not tell.
double startUtc(const Class_Pendrel& logger);

/// A UTC date in the logger's zone, daylight time included when the logger adjusts for it.
double localTime(const Class_VardenLogger& logger, double utc);

/// The same as ISO 8601 with its offset, "2026-03-02T09:01:00-05:00". Of a Pendrel's zone, from its start on,
/// too.
std::string isoLocal(const Class_VardenLogger& logger, double utc);
std::string isoLocal(const Class_Pendrel& logger, double utc);

/// This moment on the machine's own clock, in the same form.
std::string isoNow();

/// Local times from `From` to before `To` that a zone's clocks leave out.
struct ClockSkip {
  double From = 0, To = 0;
};
/// The skip in which a local time lies; none for a time that the clocks show.
std::optional<ClockSkip> skipAt(const Class_TimeZoneInfo& zone, double local);

/// The name of the logger's zone; empty when it has none.
std::string zoneName(const Class_VardenLogger& logger);
/// "(GMT-05:00) Eastern Time (US & Canada)", by the catalogue's letters; empty for others.
std::string zoneName(const std::string& abbreviation);

/// The zone of the tz database whose rule the logger's local time follows, "America/New_York"; empty when
/// there is none, because its zone is unknown or it does not adjust for the daylight time that this has.
std::string ianaZone(const Class_VardenLogger& logger);
/// The same; empty also when the zone did not have the logger's offset at its start.
std::string ianaZone(const Class_Pendrel& logger);

}  // namespace hy_wristlog::engineering
