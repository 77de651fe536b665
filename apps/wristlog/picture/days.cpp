#include "picture/days.h"

#include <algorithm>
#include <cmath>

namespace wristlog::picture {
namespace {

// A column is 5 minutes wide, or 15 in a picture of so many days that no finer detail can be seen.
constexpr std::size_t FineColumns = 288, CoarseColumns = 96;
constexpr std::int64_t MostFineDays = 800;

float valueAt(const Series& series, std::size_t epoch) {
  return epoch < series.size() ? series[epoch] : NoValue;
}

/// The mean of values that hold for some seconds each.
struct WeightedMean {
  double Sum = 0;
  std::int64_t Seconds = 0;

  void add(float value, std::int64_t seconds) {
    if (std::isnan(value)) return;
    Sum += static_cast<double>(value) * static_cast<double>(seconds);
    Seconds += seconds;
  }
  float value() const {
    return Seconds > 0 ? static_cast<float>(Sum / static_cast<double>(Seconds)) : NoValue;
  }
};

struct ColumnSum {
  WeightedMean Activity, Steps;
  std::array<WeightedMean, MostLightLines> Light;
  std::int64_t Covered = 0, OffWrist = 0;
};

struct EpochValues {
  float Activity, Steps;
  std::array<float, MostLightLines> Light;
  bool OffWrist;
};

void mergeLarger(Column& column, const ColumnSum& sum) {
  column.Activity = std::fmax(column.Activity, sum.Activity.value());
  column.Steps = std::fmax(column.Steps, sum.Steps.value());
  for (std::size_t i = 0; i < MostLightLines; ++i)
    column.Light[i] = std::fmax(column.Light[i], sum.Light[i].value());
  column.Covered = true;
  column.OffWrist = column.OffWrist || (sum.OffWrist > 0 && sum.OffWrist * 2 >= sum.Covered);
}

/// Walks over the epochs once. Between two changes of the clocks the columns come in order, so one sum at a
/// time is enough.
class Cutter {
 public:
  Cutter(const PlottedRecording& recording, int startHour, RecordedDays& result)
      : recording_(recording), clock_(recording.Offsets, startHour * HourSeconds), result_(result) {}

  void cut() {
    makeDays();
    addEpochs();
    addMarkers();
    addSigns();
    addChanges();
    for (const Day& day : result_.Days) result_.Totals.add(day.Totals);
  }

 private:
  void makeDays() {
    first_ = dayOf(clock_.at(recording_.Start));
    std::int64_t last = first_;
    // After clocks are set back over midnight the end's local day is not the latest one.
    for (std::int64_t at = recording_.Start; at < recording_.end();
         at = std::min(clock_.nextChange(at), recording_.end())) {
      const std::int64_t until = std::min(clock_.nextChange(at), recording_.end());
      last = std::max(last, dayOf(until - 1 + clock_.offsetAt(at)));
      first_ = std::min(first_, dayOf(clock_.at(at)));
    }
    const std::int64_t count = std::min(last - first_ + 1, MostDays);
    result_.Cut = last - first_ + 1 > MostDays;
    result_.ColumnsPerDay = count > MostFineDays ? CoarseColumns : FineColumns;
    columnSeconds_ = DaySeconds / static_cast<std::int64_t>(result_.ColumnsPerDay);
    result_.Days.resize(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i) {
      Day& day = result_.Days[static_cast<std::size_t>(i)];
      day.Number = first_ + i;
      day.Columns.resize(result_.ColumnsPerDay);
    }
  }

  Day* dayAt(LocalSeconds local) {
    const std::int64_t index = dayOf(local) - first_;
    return index >= 0 && index < std::ssize(result_.Days) ? &result_.Days[static_cast<std::size_t>(index)]
                                                          : nullptr;
  }
  std::size_t columnOf(LocalSeconds local) const {
    return static_cast<std::size_t>((local - dayOf(local) * DaySeconds) / columnSeconds_);
  }

  void addEpochs() {
    std::int64_t utc = recording_.Start;
    std::int64_t offset = clock_.offsetAt(utc);
    std::int64_t change = clock_.nextChange(utc);
    for (std::size_t epoch = 0; epoch < recording_.Epochs; ++epoch, utc += recording_.Epoch) {
      if (utc >= change) {
        offset = clock_.offsetAt(utc);
        change = clock_.nextChange(utc);
        settle();
      }
      Day* day = dayAt(utc + offset);
      if (day == nullptr) break;
      const EpochValues values = valuesAt(epoch);
      count(day->Totals, values);
      spread(values, utc + offset);
    }
    settle();
  }

  EpochValues valuesAt(std::size_t epoch) const {
    EpochValues values{valueAt(recording_.Activity, epoch),
                       valueAt(recording_.Steps, epoch),
                       {NoValue, NoValue, NoValue},
                       epoch < recording_.OffWrist.size() && recording_.OffWrist[epoch]};
    for (std::size_t i = 0; i < std::min(recording_.Light.size(), MostLightLines); ++i)
      values.Light[i] = valueAt(recording_.Light[i].Values, epoch);
    return values;
  }

  static void count(Totals& totals, const EpochValues& values) {
    ++totals.Epochs;
    totals.OffWrist += values.OffWrist ? 1 : 0;
    if (!values.OffWrist) totals.Activity.add(values.Activity);
    totals.Steps.add(values.Steps);
    bool valued = !std::isnan(values.Activity) || !std::isnan(values.Steps);
    for (std::size_t i = 0; i < MostLightLines; ++i) {
      if (!values.OffWrist) totals.Light[i].add(values.Light[i]);
      valued = valued || !std::isnan(values.Light[i]);
    }
    totals.Valued += valued ? 1 : 0;
  }

  void spread(const EpochValues& values, LocalSeconds from) {
    const LocalSeconds to = from + recording_.Epoch;
    while (from < to) {
      if (from < sumBegins_ || from >= sumBegins_ + columnSeconds_) {
        settle();
        sumBegins_ = dayOf(from) * DaySeconds + static_cast<std::int64_t>(columnOf(from)) * columnSeconds_;
      }
      const std::int64_t seconds = std::min(to, sumBegins_ + columnSeconds_) - from;
      sum_.Activity.add(values.Activity, seconds);
      sum_.Steps.add(values.Steps, seconds);
      for (std::size_t i = 0; i < MostLightLines; ++i) sum_.Light[i].add(values.Light[i], seconds);
      sum_.Covered += seconds;
      if (values.OffWrist) sum_.OffWrist += seconds;
      from += seconds;
    }
  }

  void settle() {
    Day* day = sum_.Covered > 0 ? dayAt(sumBegins_) : nullptr;
    if (day != nullptr) mergeLarger(day->Columns[columnOf(sumBegins_)], sum_);
    sum_ = {};
  }

  void addMarkers() {
    for (const Marker& marker : recording_.Markers) {
      const LocalSeconds local = clock_.at(marker.Time);
      Day* day = dayAt(local);
      if (day == nullptr) continue;
      const std::size_t button = marker.Button == 2 ? 1 : 0;
      ++day->Totals.Markers[button];
      day->Markers[button].push_back(columnOf(local));
    }
    for (Day& day : result_.Days)
      for (auto& columns : day.Markers) {
        std::sort(columns.begin(), columns.end());
        columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
      }
  }

  void addSigns() {
    const std::int64_t last = std::max(recording_.Start, recording_.end() - 1);
    for (const Event& event : recording_.Events) {
      if (event.Shown == Sign::None) continue;
      const LocalSeconds local = clock_.at(event.Time.value_or(last));
      Day* day = dayAt(local);
      if (day == nullptr) continue;
      // Every status tells of a weak battery again, so one sign a day is enough.
      const bool isTold = std::any_of(day->Signs.begin(), day->Signs.end(), [&](const auto& sign) {
        return sign.second == event.Shown &&
               (sign.first == columnOf(local) || event.Shown == Sign::LowBattery);
      });
      if (!isTold) day->Signs.emplace_back(columnOf(local), event.Shown);
    }
    for (Day& day : result_.Days) std::sort(day.Signs.begin(), day.Signs.end());
  }

  void addChanges() {
    for (std::int64_t at = clock_.nextChange(recording_.Start); at < recording_.end();
         at = clock_.nextChange(at)) {
      const LocalSeconds before = at + clock_.offsetAt(at - 1);
      if (Day* day = dayAt(before)) day->Changes.push_back({columnOf(before), clock_.at(at) - before});
    }
  }

  const PlottedRecording& recording_;
  LocalClock clock_;
  RecordedDays& result_;
  std::int64_t first_ = 0, columnSeconds_ = 1;
  ColumnSum sum_;
  LocalSeconds sumBegins_ = 0;
};

}  // namespace

bool Column::hasValue() const {
  return !std::isnan(Activity) || !std::isnan(Steps) ||
         std::any_of(Light.begin(), Light.end(), [](float value) { return !std::isnan(value); });
}

void Total::add(float value) {
  if (std::isnan(value)) return;
  Sum += static_cast<double>(value);
  ++Count;
}

void Totals::add(const Totals& other) {
  const auto join = [](Total& total, const Total& more) {
    total.Sum += more.Sum;
    total.Count += more.Count;
  };
  Epochs += other.Epochs;
  Valued += other.Valued;
  OffWrist += other.OffWrist;
  join(Activity, other.Activity);
  join(Steps, other.Steps);
  for (std::size_t i = 0; i < MostLightLines; ++i) join(Light[i], other.Light[i]);
  for (std::size_t i = 0; i < Markers.size(); ++i) Markers[i] += other.Markers[i];
}

RecordedDays daysOf(const PlottedRecording& recording, int startHour) {
  RecordedDays result;
  if (recording.Epochs > 0 && recording.Epoch > 0) Cutter(recording, startHour, result).cut();
  return result;
}

}  // namespace wristlog::picture
