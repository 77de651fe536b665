#pragma once

#include <cstdint>

#include "picture/days.h"

namespace wristlog::picture {

/// How high in a row values are drawn.
struct Scales {
  double Activity = 1, Steps = 1;  ///< the value at the top
  LightScale Light;
};

/// A value that only the highest half percent of a picture's bars exceed, rounded up to a number that reads
/// well; 1 when no bar is above 0.
double robustMaximum(const RecordedDays& days, float Column::*series);

Scales scalesOf(const RecordedDays& days, const PlottedRecording& recording);

/// 0 to 1, from the bottom of a row to its top; NaN for no value. Values outside the scale are drawn at its
/// ends.
double linearShare(double value, double top);
double logarithmicShare(double value, const LightScale& scale);

}  // namespace wristlog::picture
