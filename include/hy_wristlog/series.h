#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "hy_wristlog/date.h"
#include "hy_wristlog/enumerations.h"

namespace hy_wristlog {

/// Activity counts, one element for each epoch. -1: no value; `EmptyActivity`: nothing was stored.
using ActivitySeries = std::vector<std::int32_t>;
/// Lux, or microwatts per square centimetre for the colours. -1: no value; NaN: nothing was stored.
using LightSeries = std::vector<float>;
/// Markers: True or Empty. Wrist status: True while the logger is off the wrist.
using TristateSeries = std::vector<Tristate>;
/// Steps, one element for each epoch. `EmptySteps`: nothing was stored.
using StepsSeries = std::vector<std::int32_t>;
using ByteSeries = std::vector<std::uint8_t>;
/// Dates in UTC; -1 is unknown.
using DateSeries = std::vector<Date>;
using TextSeries = std::vector<std::string>;

inline constexpr std::int32_t EmptyActivity = std::numeric_limits<std::int32_t>::min();
inline constexpr std::int32_t EmptySteps = std::numeric_limits<std::int32_t>::min();
inline constexpr float EmptyLight = std::numeric_limits<float>::quiet_NaN();

}  // namespace hy_wristlog
