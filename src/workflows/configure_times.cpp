#include "workflows/configure_times.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/dates.h"
#include "hy_wristlog/failure_numbers.h"
#include "timezones/Class_TimeZoneTools.h"
#include "workflows/main_state.h"

namespace hy_wristlog {
namespace {

constexpr std::int32_t LongestMinuteEpoch = 60;

/// The grid of moments on which recordings of an epoch length begin and end.
class EpochGrid {
 public:
  explicit EpochGrid(std::int32_t epochLength)
      : epochLength_(epochLength), epochsPerDay_(SecondsPerDay / epochLength) {}

  double cut(double date) const {
    return byMinute() ? cutToMinute(date) : std::floor(epochs(date)) / epochsPerDay_;
  }

  double earliestStart(double now) const {
    const double start = nextMinute(now);
    return byMinute() ? start : std::ceil(epochs(start)) / epochsPerDay_;
  }

  double latestStart() const {
    return byMinute() ? cutToMinute(NeverDate) - 1 / MinutesPerDay : cut(NeverDate) - 1 / epochsPerDay_;
  }

  /// For long epochs the distance in days is the epoch's seconds divided by the epochs of a day.
  double earliestEnd(double start) const {
    return start + (byMinute() ? 1 / MinutesPerDay : epochLength_ / epochsPerDay_);
  }

  double latestEnd() const {
    return byMinute() ? cutToMinute(NeverDate) : std::nearbyint(epochs(NeverDate)) / epochsPerDay_;
  }

 private:
  bool byMinute() const { return epochLength_ <= LongestMinuteEpoch; }
  /// Counted in whole seconds, since a date on the grid may be off in its last digits.
  double epochs(double date) const { return std::nearbyint(date * SecondsPerDay) / epochLength_; }

  std::int32_t epochLength_;
  double epochsPerDay_;
};

}  // namespace

double nextMinute(double date) {
  const CivilTime time = civilFromDate(date);
  return addTime(datePart(date), timeSerial(time.Hour, time.Minute + (time.Second > 0 ? 2 : 1), 0));
}

double cutToMinute(double date) {
  const CivilTime time = civilFromDate(date);
  return addTime(datePart(date), timeSerial(time.Hour, time.Minute, 0));
}

std::int32_t fitRecordingTimes(const TimeRequest& request, RecordingTimes& times) {
  const EpochGrid grid(request.EpochLength);
  const auto toUtc = [&](double local) {
    return local - Class_TimeZoneTools::fncCalcOffset(local, *request.Zone, request.Daylight) / MinutesPerDay;
  };

  const double earliestStart = grid.earliestStart(request.EarliestUtc);
  const double latestStart = grid.latestStart();
  times.StartUtc = request.StartLocal ? toUtc(grid.cut(*request.StartLocal)) : earliestStart;
  const bool early = isBefore(times.StartUtc, earliestStart);
  const bool late = isBefore(latestStart, times.StartUtc);
  if ((early || late) && request.StartLocal) return ReturnCode::WrongStart;
  if (early) times.StartUtc = earliestStart;
  if (late) times.StartUtc = latestStart;
  times.StartLocal = Class_TimeZoneTools::fncUTCToLocalDate(times.StartUtc, *request.Zone, request.Daylight);
  times.OffsetMinutes = static_cast<std::int32_t>(minutesBetween(times.StartUtc, times.StartLocal));

  const double earliestEnd = grid.earliestEnd(times.StartUtc);
  const double latestEnd = grid.latestEnd();
  times.EndUtc = request.EndLocal ? toUtc(grid.cut(*request.EndLocal)) : NeverDate;
  const bool endsEarly = isBefore(times.EndUtc, earliestEnd);
  const bool endsLate = isBefore(latestEnd, times.EndUtc);
  if ((endsEarly || endsLate) && request.StartLocal) return ReturnCode::WrongEnd;
  if (endsEarly) times.EndUtc = earliestEnd;
  if (endsLate) times.EndUtc = latestEnd;
  return ReturnCode::Success;
}

double earliestEnd(std::int32_t epochLength, double startUtc) {
  return EpochGrid(epochLength).earliestEnd(startUtc);
}

bool isValidEpochLength(std::int32_t seconds) {
  constexpr std::array Valid{15, 30, 60, 120, 300};
  return std::find(Valid.begin(), Valid.end(), seconds) != Valid.end();
}

}  // namespace hy_wristlog
