#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "varden/record.h"
#include "varden/series_set.h"

namespace hy_wristlog {

/// The record's arrays while a recording is decoded. They have one upper bound in common, and every store is
/// checked against it. Memory grows with the elements that are stored, not with the bound, so a bound that is
/// far too high costs nothing. In the end `settle` gives all arrays the same size.
class EpochArrays {
 public:
  /// More elements than any logger records, gaps included. Raises OutOfMemory beyond it.
  static constexpr std::int64_t MostElements = std::int64_t{1} << 26;

  explicit EpochArrays(VardenRecord& record) : record_(record) {}

  /// Empties all eight arrays.
  void clear();
  /// Gives the arrays of `set` the indices 0 to `elements` - 1. Room is made for `expected` of them.
  void allocate(SeriesSet set, std::int64_t elements, std::int64_t expected);
  /// Moves the upper bound and keeps the content up to it. Raises Subscript for a bound below -1.
  void redimension(std::int64_t upperBound);
  std::int64_t upperBound() const { return upperBound_; }
  /// Gives the arrays exactly `elements` elements. Those that were never stored are empty ones.
  void settle(std::int64_t elements);

  /// The element of one array, to be stored. Raises Subscript beyond the bound and for an array outside the
  /// set.
  template <SeriesSet Which>
  auto& at(std::int64_t index) {
    auto& array = arrayOf<Which>();
    if (static_cast<std::size_t>(index) >= array.size()) [[unlikely]]
      extend(array, Which, index);
    return array[static_cast<std::size_t>(index)];
  }

  /// The `count` elements of one array from `index` on, to be stored. Raises what `at` raises.
  template <SeriesSet Which>
  auto run(std::int64_t index, std::int64_t count) {
    auto& array = arrayOf<Which>();
    if (static_cast<std::size_t>(index + count) > array.size()) extend(array, Which, index + count - 1);
    return std::span(array).subspan(static_cast<std::size_t>(index), static_cast<std::size_t>(count));
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

  /// Gives the array an element `index`, and some more after it.
  template <class Array>
  void extend(Array& array, SeriesSet which, std::int64_t index);
  template <class Do>
  void forHeld(Do&& apply);

  VardenRecord& record_;
  SeriesSet held_ = 0;
  std::int64_t upperBound_ = -1;
};

}  // namespace hy_wristlog
