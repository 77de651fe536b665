#include "varden/decode/epoch_arrays.h"

#include <algorithm>

#include "base/faults.h"

namespace hy_wristlog {
namespace {

/// Few enough to be in the processor's cache still when they are stored.
constexpr std::int64_t ElementsAhead = 1024;

constexpr std::int32_t emptyElement(const ActivitySeries&) { return EmptyActivity; }
constexpr float emptyElement(const LightSeries&) { return EmptyLight; }
constexpr Tristate emptyElement(const TristateSeries&) { return Tristate::Empty; }

void requireAffordable(std::int64_t elements) {
  if (elements > EpochArrays::MostElements) fault::raise(fault::OutOfMemory);
}

}  // namespace

template <class Do>
void EpochArrays::forHeld(Do&& apply) {
  if (held_ & series::Activity) apply(record_.ActivityArray);
  if (held_ & series::Light) apply(record_.LightArray);
  if (held_ & series::Red) apply(record_.RedLightArray);
  if (held_ & series::Green) apply(record_.GreenLightArray);
  if (held_ & series::Blue) apply(record_.BlueLightArray);
  if (held_ & series::Marker) apply(record_.MarkerArray);
  if (held_ & series::Marker2) apply(record_.Marker2Array);
  if (held_ & series::Wrist) apply(record_.WristStatusArray);
}

void EpochArrays::clear() {
  held_ =
      series::Activity | series::Light | series::Colours | series::Marker | series::Marker2 | series::Wrist;
  forHeld([](auto& array) { array = {}; });
  held_ = 0;
  upperBound_ = -1;
}

void EpochArrays::allocate(SeriesSet set, std::int64_t elements, std::int64_t expected) {
  requireAffordable(elements);
  held_ = set;
  upperBound_ = elements - 1;
  const auto room = static_cast<std::size_t>(std::min(elements, expected));
  forHeld([room](auto& array) { array.reserve(room); });
}

void EpochArrays::redimension(std::int64_t upperBound) {
  if (upperBound < -1) fault::raise(fault::Subscript);
  requireAffordable(upperBound + 1);
  upperBound_ = upperBound;
  forHeld([size = static_cast<std::size_t>(upperBound + 1)](auto& array) {
    if (array.size() > size) array.resize(size);
  });
}

void EpochArrays::settle(std::int64_t elements) {
  requireAffordable(elements);
  upperBound_ = elements - 1;
  forHeld([size = static_cast<std::size_t>(elements)](auto& array) {
    array.resize(size, emptyElement(array));
    if (array.capacity() - size > size / 8) array.shrink_to_fit();
  });
}

void EpochArrays::storeNoValue(SeriesSet set, std::int64_t index) {
  if (set & series::Activity) at<series::Activity>(index) = -1;
  if (set & series::Red) at<series::Red>(index) = -1;
  if (set & series::Green) at<series::Green>(index) = -1;
  if (set & series::Blue) at<series::Blue>(index) = -1;
  if (set & series::Light) at<series::Light>(index) = -1;
}

template <class Array>
void EpochArrays::extend(Array& array, SeriesSet which, std::int64_t index) {
  if (!(held_ & which) || index < 0 || index > upperBound_) fault::raise(fault::Subscript);
  const std::int64_t bound = upperBound_ + 1, needed = index + 1;
  const auto size = static_cast<std::int64_t>(array.size());
  // Room for more than is asked for, so that growing element by element does not copy each time.
  if (static_cast<std::size_t>(needed) > array.capacity())
    array.reserve(static_cast<std::size_t>(std::min(bound, std::max(needed, size + size / 4))));
  const std::int64_t ahead =
      std::min({bound, size + ElementsAhead, static_cast<std::int64_t>(array.capacity())});
  array.resize(static_cast<std::size_t>(std::max(needed, ahead)), emptyElement(array));
}

template void EpochArrays::extend(ActivitySeries&, SeriesSet, std::int64_t);
template void EpochArrays::extend(LightSeries&, SeriesSet, std::int64_t);
template void EpochArrays::extend(TristateSeries&, SeriesSet, std::int64_t);

}  // namespace hy_wristlog
