#pragma once

#include <cstdint>

namespace hy_wristlog {

/// A set of the eight arrays that a recording is decoded into.
using SeriesSet = std::uint8_t;

namespace series {
inline constexpr SeriesSet Activity = 1, Light = 2, Red = 4, Green = 8, Blue = 16, Marker = 32, Marker2 = 64,
                           Wrist = 128;
inline constexpr SeriesSet Colours = Red | Green | Blue;
}  // namespace series

}  // namespace hy_wristlog
