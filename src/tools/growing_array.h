#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "base/faults.h"

namespace hy_wristlog {

/// An array with a lower bound of its own. Before `redim` it is no array at all. An index outside the bounds
/// raises Subscript, and so does asking for bounds or elements of no array.
template <class T>
class GrowingArray {
 public:
  using value_type = T;

  bool isArray() const { return isArray_; }
  std::int32_t LBound() const {
    needArray();
    return lower_;
  }
  std::int32_t UBound() const {
    needArray();
    return lower_ + static_cast<std::int32_t>(elements_.size()) - 1;
  }

  T& operator[](std::int32_t index) { return elements_[offset(index)]; }
  const T& operator[](std::int32_t index) const { return elements_[offset(index)]; }

  /// Makes a new array of default elements. Raises Subscript for an upper bound below the lower one.
  void redim(std::int32_t lower, std::int32_t upper) {
    const std::size_t size = sizeOf(lower, upper);
    elements_.assign(size, T{});
    lower_ = lower;
    isArray_ = true;
  }

  /// Moves the upper bound and keeps the elements; a lower bound other than the present one raises Subscript.
  void redimPreserve(std::int32_t lower, std::int32_t upper) {
    const std::size_t size = sizeOf(lower, upper);
    if (!isArray_) {
      lower_ = lower;
      isArray_ = true;
    }
    if (lower != lower_) fault::raise(fault::Subscript);
    elements_.resize(size);
  }

  /// Makes it no array again.
  void erase() { *this = {}; }

  T* data() { return elements_.data(); }
  const T* data() const { return elements_.data(); }
  std::size_t size() const { return elements_.size(); }
  auto begin() { return elements_.begin(); }
  auto end() { return elements_.end(); }
  auto begin() const { return elements_.begin(); }
  auto end() const { return elements_.end(); }

 private:
  void needArray() const {
    if (!isArray_) fault::raise(fault::Subscript);
  }

  std::size_t offset(std::int32_t index) const {
    const std::int64_t offset = std::int64_t{index} - lower_;
    if (offset < 0 || offset >= static_cast<std::int64_t>(elements_.size())) fault::raise(fault::Subscript);
    return static_cast<std::size_t>(offset);
  }

  static std::size_t sizeOf(std::int32_t lower, std::int32_t upper) {
    const std::int64_t size = std::int64_t{upper} - lower + 1;
    if (size < 1 || size > std::numeric_limits<std::int32_t>::max()) fault::raise(fault::Subscript);
    return static_cast<std::size_t>(size);
  }

  std::vector<T> elements_;
  std::int32_t lower_ = 0;
  bool isArray_ = false;
};

/// Adds one element to the end and returns its index. With a lower bound of -1 the array is 0-based, and the
/// first element used is 1. Raises Subscript when the array has another lower bound.
template <class T>
std::int32_t fncRedimArray(GrowingArray<T>& array, std::int16_t lowerBound = 1) {
  constexpr std::int16_t ZeroLeftUnset = -1;
  if (lowerBound == ZeroLeftUnset) {
    const std::int32_t index = array.isArray() ? array.UBound() + 1 : 1;
    array.redimPreserve(0, index);
    return index;
  }
  if (!array.isArray() || array.UBound() < lowerBound) {
    array.redim(lowerBound, lowerBound);
    return lowerBound;
  }
  const std::int32_t index = array.UBound() + 1;
  array.redimPreserve(lowerBound, index);
  return index;
}

}  // namespace hy_wristlog
