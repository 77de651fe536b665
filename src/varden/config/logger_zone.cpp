#include "varden/config/logger_zone.h"

#include <algorithm>

#include "base/dates.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

/// Whether the zone changes in that year when the logger does. Dates that are computed in different ways may
/// differ in their last digits, so whole seconds are compared.
bool sameChange(double (*change)(std::int32_t, const Class_TimeZoneInfo&), const Class_TimeZoneInfo& zone,
                double loggerChange) {
  return secondsBetween(change(civilFromDate(loggerChange).Year, zone), loggerChange) == 0;
}

bool isZoneOf(const VardenRecord& record, const Class_TimeZoneInfo& zone) {
  if (zone.Bias != record.TZbias || zone.StandardBias != record.TZstandardBias ||
      zone.DaylightBias != record.TZdaylightBias)
    return false;
  return !record.AutoDSTadjust ||
         (sameChange(Class_TimeZoneTools::fncGetDaylightStart, zone, record.TZdstStart) &&
          sameChange(Class_TimeZoneTools::fncGetStandardStart, zone, record.TZdstEnd));
}

}  // namespace

TimeZoneRef findLoggerZone(const VardenRecord& record) {
  Class_TimeZoneTools& tools = TimeZoneTools();
  TimeZoneRef named = tools.fncGetTZIfromAbbrev(record.TZstandardAbbrev);
  if (named && isZoneOf(record, *named)) return named;
  const auto& zones = tools.Get_TimeZoneArray();
  const auto found = std::find_if(zones.begin(), zones.end(), [&](const TimeZoneRef& zone) {
    return zone && zone->Bias == record.TZbias;
  });
  return found != zones.end() ? *found : nullptr;
}

}  // namespace hy_wristlog
