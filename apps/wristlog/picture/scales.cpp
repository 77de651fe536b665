#include "picture/scales.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wristlog::picture {
namespace {

constexpr double FittingShare = 0.995;
constexpr double Tolerance = 1e-6;

double roundedUp(double value) {
  constexpr std::array Steps{1.0, 1.2, 1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0};
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  for (const double step : Steps)
    if (value <= step * power * (1 + Tolerance)) return step * power;
  return 10 * power;
}

}  // namespace

double robustMaximum(const RecordedDays& days, float Column::*series) {
  std::vector<float> values;
  for (const Day& day : days.Days)
    for (const Column& column : day.Columns)
      if (column.*series > 0) values.push_back(column.*series);
  if (values.empty()) return 1;
  const auto rank =
      static_cast<std::ptrdiff_t>(std::ceil(FittingShare * static_cast<double>(values.size()))) - 1;
  std::nth_element(values.begin(), values.begin() + rank, values.end());
  return roundedUp(static_cast<double>(values[static_cast<std::size_t>(rank)]));
}

Scales scalesOf(const RecordedDays& days, const PlottedRecording& recording) {
  const double asked = recording.Layout.ActivityScale;
  return {asked > 0 ? asked : robustMaximum(days, &Column::Activity), robustMaximum(days, &Column::Steps),
          recording.LightAxis};
}

double linearShare(double value, double top) { return std::clamp(value / top, 0.0, 1.0); }

double logarithmicShare(double value, const LightScale& scale) {
  if (value <= 0) return 0;
  return std::clamp((std::log10(value) - scale.LowestPower) / (scale.HighestPower - scale.LowestPower), 0.0,
                    1.0);
}

}  // namespace wristlog::picture
