#include "engineering/zones.h"

#include <algorithm>
#include <utility>

#include "base/dates.h"
#include "base/faults.h"
#include "base/inside.h"
#include "engineering/dates.h"
#include "hy_wristlog/failure.h"
#include "pendrel/record.h"
#include "platform/zone_catalogue.h"
#include "start_up/start_up.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog::engineering {
namespace {

bool hasDaylight(const Class_TimeZoneInfo& zone) {
  return zone.DaylightDate.wMonth != 0 && zone.StandardDate.wMonth != 0;
}

std::vector<OffsetPeriod> offsetsOf(const Class_TimeZoneInfo& zone, bool daylight, double fromUtc,
                                    double toUtc) {
  const std::int32_t standard = -zone.Bias;
  std::vector<OffsetPeriod> periods{{fromUtc, standard}};
  if (!daylight || !hasDaylight(zone)) return periods;

  std::vector<OffsetPeriod> changes;
  const std::int32_t lastYear = civilFromDate(toUtc).Year + 1;
  for (std::int32_t year = civilFromDate(fromUtc).Year - 1; year <= lastYear; ++year) {
    const double start = Class_TimeZoneTools::fncGetDaylightStart(year, zone);
    double end = Class_TimeZoneTools::fncGetStandardStart(year, zone);
    // South of the equator the time at which daylight time ends is read as standard time.
    if (end < start) end += zone.DaylightBias / MinutesPerDay;
    changes.push_back({start, standard - zone.DaylightBias});
    changes.push_back({end, standard});
  }
  std::stable_sort(changes.begin(), changes.end(),
                   [](const OffsetPeriod& a, const OffsetPeriod& b) { return a.FromUtc < b.FromUtc; });
  for (const OffsetPeriod& change : changes) {
    if (secondsBetween(change.FromUtc, fromUtc) >= 0)
      periods.front().Minutes = change.Minutes;
    else if (secondsBetween(change.FromUtc, toUtc) >= 0)
      periods.push_back(change);
  }
  return periods;
}

std::string isoAt(double utc, std::int32_t minutes) {
  return isoDate(addTime(utc, minutes / MinutesPerDay),
                 Class_TimeZoneTools::fncFormatOffset(fault::narrow<std::int16_t>(minutes)));
}

std::string ianaName(const Class_TimeZoneInfo& zone) {
  for (const platform::CatalogueZone& row : platform::zoneCatalogue())
    if (row.Key == zone.KeyName) return std::string(row.TzName);
  return {};
}

std::string ianaZone(const TimeZoneRef& zone, bool adjusts) {
  return zone && (adjusts || !hasDaylight(*zone)) ? ianaName(*zone) : "";
}

}  // namespace

std::vector<ZoneView> zones() {
  openLibrary();
  Class_TimeZoneTools& tools = TimeZoneTools();
  tools.fncPopulateTZICollection();
  const TimeZoneRef local = tools.fncLocalTimeZoneName().Zone;
  const double utc = Class_TimeZoneTools::fncGetGMTTime();
  std::vector<ZoneView> views;
  for (const TimeZoneRef& zone : tools.Get_TimeZoneArray()) {
    ZoneView view;
    view.Abbreviation = zone->Abbreviation;
    view.Key = zone->KeyName;
    view.DisplayName = zone->DisplayName;
    view.StandardName = zone->StandardName;
    view.IanaName = ianaName(*zone);
    view.Bias = zone->Bias;
    view.DaylightBias = zone->DaylightBias;
    view.HasDaylight = hasDaylight(*zone);
    view.OffsetNow = static_cast<std::int32_t>(
        minutesBetween(utc, Class_TimeZoneTools::fncUTCToLocalDate(utc, *zone, true)));
    view.DaylightNow = view.OffsetNow != -zone->Bias;
    view.Local = zone == local;
    views.push_back(std::move(view));
  }
  return views;
}

std::vector<OffsetPeriod> offsetPeriods(const Class_VardenLogger& logger, double fromUtc, double toUtc) {
  const VardenRecord& record = Inside::of(logger).record;
  if (!record.TimeZone) return {{fromUtc, record.GMToffset}};
  return offsetsOf(*record.TimeZone, record.AutoDSTadjust, fromUtc, toUtc);
}

std::vector<OffsetPeriod> offsetPeriods(const Class_Pendrel& logger, double fromUtc, double toUtc) {
  const std::int32_t told = logger.Get_GMToffset();
  if (const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(logger.Get_TimeZoneAbbrev())) {
    auto periods = offsetsOf(*zone, logger.Get_AutoDSTadjust(), fromUtc, toUtc);
    if (periods.front().Minutes == told) return periods;
  }
  return {{fromUtc, told}};
}

std::vector<OffsetPeriod> offsetPeriods(const std::string& abbreviation, double fromUtc, double toUtc) {
  openLibrary();
  const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(abbreviation);
  if (!zone) throw Failure(ReturnCode::UnknownZone, "offsetPeriods", "No zone is called " + abbreviation);
  constexpr bool Daylight = true;
  return offsetsOf(*zone, Daylight, fromUtc, toUtc);
}

double startUtc(const Class_Pendrel& logger) {
  if (logger.Get_StartDate() == UnknownDate || logger.Get_StartTime() == UnknownDate ||
      logger.Get_GMToffset() == PendrelRecord::NoOffset)
    return UnknownDate;
  return addTime(logger.Get_StartDate(), logger.Get_StartTime() - logger.Get_GMToffset() / MinutesPerDay);
}

double localTime(const Class_VardenLogger& logger, double utc) {
  return addTime(utc, offsetPeriods(logger, utc, utc).front().Minutes / MinutesPerDay);
}

std::string isoLocal(const Class_VardenLogger& logger, double utc) {
  return isoAt(utc, offsetPeriods(logger, utc, utc).front().Minutes);
}

std::string isoLocal(const Class_Pendrel& logger, double utc) {
  return isoAt(utc, offsetPeriods(logger, startUtc(logger), utc).back().Minutes);
}

std::string isoNow() {
  return isoAt(Class_TimeZoneTools::fncGetGMTTime(), Class_TimeZoneTools::fncGetGMTOffset());
}

std::optional<ClockSkip> skipAt(const Class_TimeZoneInfo& zone, double local) {
  constexpr bool Daylight = true;
  constexpr double FarthestOffset = 2;  // days
  const auto periods = offsetsOf(zone, Daylight, local - FarthestOffset, local + FarthestOffset);
  for (std::size_t i = 1; i < periods.size(); ++i) {
    const double change = periods[i].FromUtc;
    const ClockSkip skip{addTime(change, periods[i - 1].Minutes / MinutesPerDay),
                         addTime(change, periods[i].Minutes / MinutesPerDay)};
    if (!isBefore(local, skip.From) && isBefore(local, skip.To)) return skip;
  }
  return std::nullopt;
}

std::string zoneName(const Class_VardenLogger& logger) {
  const TimeZoneRef& zone = Inside::of(logger).record.TimeZone;
  return zone ? zone->DisplayName : std::string{};
}

std::string zoneName(const std::string& abbreviation) {
  openLibrary();
  const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(abbreviation);
  return zone ? zone->DisplayName : std::string{};
}

std::string ianaZone(const Class_VardenLogger& logger) {
  const VardenRecord& record = Inside::of(logger).record;
  return ianaZone(record.TimeZone, record.AutoDSTadjust);
}

std::string ianaZone(const Class_Pendrel& logger) {
  const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(logger.Get_TimeZoneAbbrev());
  const double start = startUtc(logger);
  if (!zone || start == UnknownDate) return {};
  const auto periods = offsetsOf(*zone, logger.Get_AutoDSTadjust(), start, start);
  return periods.front().Minutes == logger.Get_GMToffset() ? ianaZone(zone, logger.Get_AutoDSTadjust()) : "";
}

}  // namespace hy_wristlog::engineering
