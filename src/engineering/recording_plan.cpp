#include "engineering/recording_plan.h"

#include <cmath>
#include <utility>

#include "base/dates.h"
#include "engineering/dates.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure_numbers.h"
#include "start_up/start_up.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/logging_modes.h"
#include "workflows/configure_times.h"
#include "workflows/docked_model.h"

namespace hy_wristlog::engineering {
namespace {

/// Longer than it takes from a plan to the moment at which the logger is told of it.
constexpr double Allowance = 1 / MinutesPerDay;

TimeZoneRef zoneOf(const std::string& abbreviation) {
  openLibrary();
  return abbreviation.empty() ? TimeZoneTools().fncLocalTimeZoneName().Zone
                              : TimeZoneTools().fncGetTZIfromAbbrev(abbreviation);
}

bool adjusts(const Class_TimeZoneInfo& zone) {
  return zone.DaylightDate.wMonth > 0 && zone.StandardDate.wMonth > 0;
}

/// "2026-03-08 02:30"
std::string minuteText(double date) {
  constexpr std::size_t Day = 10, MinuteLength = 16;
  return isoDate(date).substr(0, MinuteLength).replace(Day, 1, " ");
}

std::string skipWords(const Class_TimeZoneInfo& zone, bool daylight, double local) {
  if (!daylight || !adjusts(zone)) return {};
  const auto skip = skipAt(zone, local);
  if (!skip) return {};
  return "The clocks of " + zone.Abbreviation + " skip " + minuteText(local) + ": they go from " +
         minuteText(skip->From) + " to " + minuteText(skip->To) + ".";
}

class PlanCheck {
 public:
  PlanCheck(const RecordingPlan& plan, const Class_TimeZoneInfo& zone)
      : plan_(plan), zone_(zone), daylight_(plan.Daylight && adjusts(zone)) {}

  PlanVerdict verdict() const {
    for (const auto& [given, code] : {std::pair{plan_.SetTime, ReturnCode::WrongStart},
                                      {plan_.Start, ReturnCode::WrongStart},
                                      {plan_.End, ReturnCode::WrongEnd}})
      if (given)
        if (std::string why = skipWords(zone_, plan_.Daylight, *given); !why.empty())
          return {code, std::move(why)};
    return times();
  }

 private:
  double toUtc(double local) const {
    return local - Class_TimeZoneTools::fncCalcOffset(local, zone_, daylight_) / MinutesPerDay;
  }

  PlanVerdict times() const {
    const double now = plan_.SetTime ? toUtc(*plan_.SetTime) : Class_TimeZoneTools::fncGetGMTTime();
    TimeRequest request{plan_.EpochLength, &zone_, daylight_, now + Allowance, {}, {}};
    RecordingTimes times;
    fitRecordingTimes(request, times);
    const double earliestStart = times.StartLocal;
    request.StartLocal = plan_.Start;
    request.EndLocal = plan_.End;
    const std::int32_t code = fitRecordingTimes(request, times);
    if (code == ReturnCode::WrongStart)
      return {code, "The earliest start is now " + minuteText(earliestStart) + "."};
    // Without a start an early end would be moved.
    if (plan_.End && (code == ReturnCode::WrongEnd || isBefore(toUtc(*plan_.End), times.EndUtc)))
      return {ReturnCode::WrongEnd, endWords(times)};
    if (code == ReturnCode::Success && !readsBack(times))
      return {ReturnCode::WrongStart, changeWords(request, plan_.Start.value_or(times.StartLocal))};
    return {code, {}};
  }

  /// A logger keeps no offset. The library reads back the one that the zone's clock has when it shows what
  /// UTC shows at the start, and Configure fails where that is another one: near a change of the clocks.
  bool readsBack(const RecordingTimes& times) const {
    return Class_TimeZoneTools::fncCalcOffset(times.StartUtc, zone_, daylight_) == times.OffsetMinutes;
  }

  std::string changeWords(TimeRequest request, double local) const {
    constexpr std::int32_t Steps = 96;
    constexpr double HalfHour = 30 / MinutesPerDay;
    request.EndLocal.reset();
    for (std::int32_t step = 0; step < Steps; ++step) {
      request.StartLocal = std::floor(local / HalfHour + 1) * HalfHour + step * HalfHour;
      RecordingTimes later;
      fitRecordingTimes(request, later);
      if (readsBack(later) && skipWords(zone_, plan_.Daylight, *request.StartLocal).empty())
        return "A start at " + minuteText(local) +
               " is too near a change of the clocks: what the logger keeps of it could not be verified. The "
               "next one is " +
               minuteText(*request.StartLocal) + ".";
    }
    return "The start is too near a change of the clocks.";
  }

  std::string endWords(const RecordingTimes& times) const {
    const double least = earliestEnd(plan_.EpochLength, times.StartUtc);
    return "A recording from " + minuteText(times.StartLocal) + " with epochs of " +
           std::to_string(plan_.EpochLength) + " seconds ends at " +
           minuteText(Class_TimeZoneTools::fncUTCToLocalDate(least, zone_, daylight_)) + " at the earliest.";
  }

  const RecordingPlan& plan_;
  const Class_TimeZoneInfo& zone_;
  bool daylight_;
};

}  // namespace

PlanVerdict verdictOn(const RecordingPlan& plan) {
  const DockedModel* model = dockedModel(plan.Model);
  if (model == nullptr) return {ReturnCode::WrongLogger, {}};
  if (!isOffered(model->DeviceType, plan.Mode)) return {ReturnCode::WrongMode, {}};
  if (!isValidEpochLength(plan.EpochLength)) return {ReturnCode::WrongEpoch, {}};
  const TimeZoneRef zone = zoneOf(plan.Zone);
  if (!zone) return {ReturnCode::UnknownZone, {}};
  return PlanCheck(plan, *zone).verdict();
}

std::string skippedBy(const std::string& zone, bool daylight, double local) {
  const TimeZoneRef found = zoneOf(zone);
  return found ? skipWords(*found, daylight, local) : std::string();
}

}  // namespace hy_wristlog::engineering
