#pragma once

#include "hy_wristlog/component.h"
#include "hy_wristlog/series.h"

/// Series as arrays. In those of variants an element that a series has no value for is HY_VT_EMPTY.
namespace hy_wristlog::component {

/// The caller frees the array. Raises bad_alloc.
HyArray* newArray(const std::vector<std::int32_t>& series);
HyArray* newArray(const LightSeries& series);
HyArray* newArray(const TristateSeries& series);
HyArray* newArray(const ByteSeries& series);
HyArray* newArray(const DateSeries& series);
HyArray* newArray(const TextSeries& series);
/// One empty element, both bounds -1.
HyArray* newArrayBelowZero();

/// The elements as they are, for `ReadSeries`. Raise bad_alloc.
void putPlain(HyVariant& to, const std::vector<std::int32_t>& series);
void putPlain(HyVariant& to, const LightSeries& series);
void putPlain(HyVariant& to, const TristateSeries& series);
void putPlain(HyVariant& to, const ByteSeries& series);
void putPlain(HyVariant& to, const DateSeries& series);

inline bool isEmpty(std::int32_t element) { return element == EmptyActivity; }
inline bool isEmpty(float element) { return element != element; }
inline bool isEmpty(Tristate element) { return element == Tristate::Empty; }

template <class Element>
bool isEmpty(const Element&) {
  return false;
}

/// Fills `series` from what valueOf gave: an array of one dimension with any lower bound, whose elements are
/// variants or have a plain type; or HY_VT_EMPTY for an empty series. Refuses anything else.
void takeSeries(const HyVariant& value, std::vector<std::int32_t>& series);
void takeSeries(const HyVariant& value, LightSeries& series);
void takeSeries(const HyVariant& value, TristateSeries& series);
void takeSeries(const HyVariant& value, ByteSeries& series);

}  // namespace hy_wristlog::component
