#pragma once

#include <cstddef>
#include <cstdint>

#include "varden/record.h"

namespace hy_wristlog {

/// A set of the record's eight arrays.
using SeriesSet = std::uint8_t;

namespace series {
inline constexpr SeriesSet Activity = 1, Light = 2, Red = 4, Green = 8, Blue = 16, Marker = 32, Marker2 = 64,
                           Wrist = 128;
inline constexpr SeriesSet Colours = Red | Green | Blue;
}  // namespace series

/// The record's arrays while a recording is decoded: one set of arrays with one upper bound, which every
/// store is checked against. Memory follows the elements that are stored, not the bound, so that a generous
/// bound costs nothing; `settle` brings both together.
class EpochArrays {
 public:
  /// More than any logger records, gaps included. Beyond it: fault 7.
  static constexpr std::int64_t MostElements = std::int64_t{1} << 26;

  explicit EpochArrays(VardenRecord& record) : record_(record) {}

  /// Empties all eight arrays.
  void clear();
  /// Makes the arrays of `set` hold the indices 0 to `elements` - 1; `expected` of them will likely be
  /// stored.
  void allocate(SeriesSet set, std::int64_t elements, std::int64_t expected);
  /// Moves the upper bound, keeping the content below it. Fault 9 below -1.
  void redimension(std::int64_t upperBound);
  std::int64_t upperBound() const { return upperBound_; }
  /// Gives the arrays exactly `elements` elements; those that were never stored are empty ones.
  void settle(std::int64_t elements);

  /// The element of one array, to be stored. Fault 9 beyond the bound, and for an array outside the set.
  template <SeriesSet Which>
  auto& at(std::int64_t index) {
    auto& array = arrayOf<Which>();
    if (static_cast<std::size_t>(index) >= array.size()) [[unlikely]]
      extend(array, Which, index);
    return array[static_cast<std::size_t>(index)];
  }

  /// Stores -1 in the activity and light arrays of `set`.
  void storeNoValue(SeriesSet set, std::int64_t index);

 private:
  template <SeriesSet Which>
  auto& arrayOf() {
    if constexpr (Which == series::Activity)
      return record_.ActivityArray;
    else if constexpr (Which == series::Light)
      return record_.LightArray;
    else if constexpr (Which == series::Red)
      return record_.RedLightArray;
    else if constexpr (Which == series::Green)
      return record_.GreenLightArray;
    else if constexpr (Which == series::Blue)
      return record_.BlueLightArray;
    else if constexpr (Which == series::Marker)
      return record_.MarkerArray;
    else if constexpr (Which == series::Marker2)
      return record_.Marker2Array;
    else
      return record_.WristStatusArray;
  }

  template <class Array>
  void extend(Array& array, SeriesSet which, std::int64_t index);
  template <class Do>
  void forHeld(Do&& apply);

  VardenRecord& record_;
  SeriesSet held_ = 0;
  std::int64_t upperBound_ = -1;
};

}  // namespace hy_wristlog
