#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "timezones/Class_TimeZoneInfo.h"

namespace hy_wristlog {

/// The machine's own zone, as far as the catalogue knows it.
struct LocalZone {
  std::string DisplayName;  ///< empty when the catalogue does not know the zone
  bool Daylight = false;    ///< the machine adjusts its clock to daylight time
  std::int16_t Offset = 0;  ///< minutes now to add to UTC
  std::string Abbreviation;
  TimeZoneRef Zone;  ///< null when the catalogue does not know the zone
};

/// The zone catalogue and local/UTC arithmetic. Dates are day counts, offsets minutes to add to UTC.
class Class_TimeZoneTools {
 public:
  Class_TimeZoneInfo CurrentTZI;

  /// Reads the catalogue once, in the order of the zones' offsets. Raises 9998 when the system has no zones.
  bool fncPopulateTZICollection();
  /// The zones of the catalogue; the caller populates it first.
  const std::vector<TimeZoneRef>& Get_TimeZoneArray() const { return timeZones_; }
  std::int32_t Get_TimeZoneCount() const { return static_cast<std::int32_t>(timeZones_.size()); }

  TimeZoneRef fncGetRegValueLTZI(std::string_view key) const;
  static std::string fncGetAbbrevFromKey(std::string_view key);
  static std::string fncGetKeyFromAbbrev(std::string_view abbreviation);
  /// Null when no zone has the abbreviation. Exact comparison.
  TimeZoneRef fncGetTZIfromAbbrev(std::string_view abbreviation);
  LocalZone fncLocalTimeZoneName();

  /// UTC now, milliseconds dropped.
  static double fncGetGMTTime();
  static std::int16_t fncGetGMTOffset();
  static double fncLocalTimeFromOffset(std::int16_t offset);
  static double fncUTCToLocalDate(double utc, const Class_TimeZoneInfo& zone, bool daylight);
  static bool fncIsDayLight(double date, const Class_TimeZoneInfo& zone);
  static double fncWeekDayToDate(std::int32_t year, std::int32_t month, std::int32_t weekday,
                                 std::int32_t occurrence);
  static std::int16_t fncCalcOffset(double date, const Class_TimeZoneInfo& zone, bool daylight);
  static std::string fncFormatOffset(std::int16_t minutes);
  static std::int16_t fncHoursToMinutes(std::string_view text);
  static double fncGetDaylightStart(std::int32_t year, const Class_TimeZoneInfo& zone);
  static double fncGetStandardStart(std::int32_t year, const Class_TimeZoneInfo& zone);
  static bool fncGetLocalAutoDST();

 private:
  std::vector<TimeZoneRef> timeZones_;
};

/// The thread's one object.
Class_TimeZoneTools& TimeZoneTools();

}  // namespace hy_wristlog
