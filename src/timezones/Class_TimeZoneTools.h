#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "timezones/Class_TimeZoneInfo.h"

namespace hy_wristlog {

namespace platform {
struct ZoneRule;
}

/// The machine's own zone, as far as the catalogue knows it.
struct LocalZone {
  std::string DisplayName;  ///< empty when the catalogue does not know the zone
  bool Daylight = false;    ///< the machine adjusts its clock to daylight time
  std::int16_t Offset = 0;  ///< minutes now to add to UTC
  std::string Abbreviation;
  TimeZoneRef Zone;  ///< null when the catalogue does not know the zone
};

/// The zone catalogue and local/UTC arithmetic. Dates are day counts that carry whole seconds, offsets are
/// minutes to add to UTC. Members that take a date raise InvalidCall outside the years 100 to 9999, and
/// Overflow for a zone whose bias does not fit 16 bits.
class Class_TimeZoneTools {
 public:
  Class_TimeZoneInfo CurrentTZI;

  /// Reads the catalogue once, in the order of the zones' offsets, zones of one offset in the order of the
  /// records. Raises NoZones when the system has no zones.
  bool fncPopulateTZICollection();
  /// The zones of the catalogue; the caller populates it first.
  const std::vector<TimeZoneRef>& Get_TimeZoneArray() const { return timeZones_; }
  std::int32_t Get_TimeZoneCount() const { return static_cast<std::int32_t>(timeZones_.size()); }

  /// Appends the zones below a key, as the records give them. False when there are none, as under every
  /// other root (HKEY_LOCAL_MACHINE) and key path than that of the zone records.
  static bool fncEnumSubKeys(std::int32_t root, std::string_view keyPath, std::vector<TimeZoneRef>& zones);
  /// The zone of a key path, or of a key alone. Without a readable rule biases and changes are 0, and an
  /// unknown key gives empty names as well.
  static TimeZoneRef fncGetRegValueLTZI(std::string_view keyPath);
  /// A zone that has only a rule, no names.
  static Class_TimeZoneInfo fncZoneOfRule(const platform::ZoneRule& rule);
  /// "Display", "Std", "Dlt" or "MapID" of a zone's key path, up to the first NUL; empty for other names.
  static std::string fncGetRegValueStr(std::string_view keyPath, std::string_view valueName);
  static std::string fncStripNulls(std::string_view text);
  /// Always true: the zone records are under the key path of the NT family.
  static bool fncRunningNT() { return true; }

  /// Empty when the table does not have the key. Exact comparison, as in the two below.
  static std::string fncGetAbbrevFromKey(std::string_view key);
  static std::string fncGetKeyFromAbbrev(std::string_view abbreviation);
  /// Null when no zone has the abbreviation. Raises NoZones as `fncPopulateTZICollection` does.
  TimeZoneRef fncGetTZIfromAbbrev(std::string_view abbreviation);
  /// Raises NoZones as `fncPopulateTZICollection` does.
  LocalZone fncLocalTimeZoneName();

  /// UTC now, milliseconds dropped.
  static double fncGetGMTTime();
  /// The machine's offset now, the difference of its two clocks, so daylight time is included.
  static std::int16_t fncGetGMTOffset();
  /// The time now where the clocks are `offset` minutes ahead of UTC.
  static double fncLocalTimeFromOffset(std::int16_t offset);
  /// Zone time of a UTC date. The date is compared with the change as if daylight time held already, so
  /// daylight time begins early by the daylight bias, an hour in most zones.
  static double fncUTCToLocalDate(double utc, const Class_TimeZoneInfo& zone, bool daylight);
  /// Whether a time of the zone's own clock is in daylight time. The moment of the change to daylight time is
  /// not yet. The moment of the change back still is where daylight time lies within one year, and is not
  /// where it lasts over the turn of the year.
  static bool fncIsDayLight(double date, const Class_TimeZoneInfo& zone);
  /// The day of the `occurrence`-th `weekday` (Sunday 0) of a month, or the last when there are fewer; 0 when
  /// there is no such day, as in month 0.
  static double fncWeekDayToDate(std::int32_t year, std::int32_t month, std::int32_t weekday,
                                 std::int32_t occurrence);
  /// The zone's offset at a date of its own clock. In the hour that the clocks repeat it is that of daylight
  /// time.
  static std::int16_t fncCalcOffset(double date, const Class_TimeZoneInfo& zone, bool daylight);
  /// The offset as "+05:30". From 1440 minutes on the hours start again at 00.
  static std::string fncFormatOffset(std::int16_t minutes);
  /// The minutes of an offset: "5:30" is 330. The part after the colon is always added, so "-5:30" is -270.
  /// Text without a colon is minutes, other text 0. Raises Overflow when the result does not fit.
  static std::int16_t fncHoursToMinutes(std::string_view text);
  /// The UTC date of the change to daylight time, cut to the minute. A zone without daylight time gives the
  /// size of its offset as a time on day 0, so 0 at Greenwich alone.
  static double fncGetDaylightStart(std::int32_t year, const Class_TimeZoneInfo& zone);
  /// The UTC date of the change back. Where daylight time lasts over the turn of the year the clock's time is
  /// taken for standard time, and the date is late by the daylight bias.
  static double fncGetStandardStart(std::int32_t year, const Class_TimeZoneInfo& zone);
  /// Whether the machine adjusts its clock to daylight time.
  static bool fncGetLocalAutoDST();

 private:
  std::vector<TimeZoneRef> timeZones_;
};

/// The one object of the thread's world.
Class_TimeZoneTools& TimeZoneTools();

}  // namespace hy_wristlog
