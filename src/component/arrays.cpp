#include "component/arrays.h"

#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "component/refusal.h"
#include "component/strings.h"
#include "component/variants.h"

namespace hy_wristlog::component {
namespace {

/// Far more than any recording has.
constexpr std::uint32_t MostElements = 1U << 26;

void store(HyVariant& to, std::int32_t element) {
  to.vt = HY_VT_I4;
  to.lVal = element;
}
void store(HyVariant& to, float element) {
  to.vt = HY_VT_R4;
  to.fltVal = element;
}
void store(HyVariant& to, Tristate element) {
  to.vt = HY_VT_BOOL;
  to.boolVal = element == Tristate::True ? HY_TRUE : HY_FALSE;
}
void store(HyVariant& to, std::uint8_t element) {
  to.vt = HY_VT_UI1;
  to.bVal = element;
}
void store(HyVariant& to, double element) {
  to.vt = HY_VT_DATE;
  to.date = element;
}
void store(HyVariant& to, const std::string& element) {
  to.bstrVal = newString(element);
  to.vt = HY_VT_BSTR;
}

/// With all bytes 0.
HyArray* newElements(std::size_t count, std::size_t size, std::uint16_t features, std::int32_t lowerBound) {
  if (count > MostElements) throw std::bad_alloc();
  auto* array = static_cast<HyArray*>(std::calloc(1, sizeof(HyArray)));
  void* elements = std::calloc(count > 0 ? count : 1, size);
  if (array == nullptr || elements == nullptr) {
    std::free(array);
    std::free(elements);
    throw std::bad_alloc();
  }
  array->cDims = 1;
  array->fFeatures = features;
  array->cbElements = static_cast<std::uint32_t>(size);
  array->pvData = elements;
  array->rgsabound[0] = {static_cast<std::uint32_t>(count), lowerBound};
  return array;
}

/// With all elements empty.
HyArray* newVariants(std::size_t count, std::int32_t lowerBound) {
  return newElements(count, sizeof(HyVariant), HY_FADF_VARIANT, lowerBound);
}

template <class Series>
void putElements(HyVariant& to, std::uint16_t type, const Series& series) {
  constexpr std::size_t Size = sizeof(typename Series::value_type);
  to.parray = newElements(series.size(), Size, 0, 0);
  to.vt = static_cast<std::uint16_t>(HY_VT_ARRAY | type);
  std::memcpy(to.parray->pvData, series.data(), series.size() * Size);
}

template <class Series>
HyArray* arrayOf(const Series& series) {
  std::unique_ptr<HyArray, decltype(&hyArrayDestroy)> array(newVariants(series.size(), 0), &hyArrayDestroy);
  auto* to = static_cast<HyVariant*>(array->pvData);
  for (const auto& element : series) {
    if (!isEmpty(element)) store(*to, element);
    ++to;
  }
  return array.release();
}

void take(const HyVariant& value, std::int32_t& element) {
  using Limits = std::numeric_limits<std::int32_t>;
  element = value.vt == HY_VT_EMPTY
                ? EmptyActivity
                : static_cast<std::int32_t>(wholeNumberOf(value, Limits::min(), Limits::max()));
}
void take(const HyVariant& value, float& element) {
  element = value.vt == HY_VT_EMPTY ? EmptyLight : singleOf(value);
}
void take(const HyVariant& value, Tristate& element) {
  element = value.vt == HY_VT_EMPTY ? Tristate::Empty : truthOf(value) ? Tristate::True : Tristate::False;
}
void take(const HyVariant& value, std::uint8_t& element) {
  element = static_cast<std::uint8_t>(wholeNumberOf(value, 0, std::numeric_limits<std::uint8_t>::max()));
}

template <class Series>
void takeElements(const HyVariant& value, Series& series) {
  series.clear();
  if (value.vt == HY_VT_EMPTY) return;
  if (!(value.vt & HY_VT_ARRAY)) throw Refusal{HY_DISP_E_TYPEMISMATCH};
  const HyArray* array = value.parray;
  if (array == nullptr) return;
  const auto type = static_cast<std::uint16_t>(value.vt & HY_VT_TYPEMASK);
  const std::size_t size = sizeOf(type);
  if (array->cDims != 1 || size == 0 || array->cbElements != size) throw Refusal{HY_DISP_E_TYPEMISMATCH};
  const std::uint32_t count = array->rgsabound[0].cElements;
  if (count > MostElements) throw Refusal{HY_E_INVALIDARG};
  if (count > 0 && array->pvData == nullptr) throw Refusal{HY_E_POINTER};
  series.resize(count);
  const auto* from = static_cast<const std::uint8_t*>(array->pvData);
  for (auto& element : series) {
    HyVariant variant{};
    if (type == HY_VT_VARIANT) {
      std::memcpy(&variant, from, size);
      variant = valueOf(variant);
    } else {
      variant.vt = type;
      std::memcpy(&variant.llVal, from, size);
    }
    take(variant, element);
    from += size;
  }
}

}  // namespace

HyArray* newArray(const std::vector<std::int32_t>& series) { return arrayOf(series); }
HyArray* newArray(const LightSeries& series) { return arrayOf(series); }
HyArray* newArray(const TristateSeries& series) { return arrayOf(series); }
HyArray* newArray(const ByteSeries& series) { return arrayOf(series); }
HyArray* newArray(const DateSeries& series) { return arrayOf(series); }
HyArray* newArray(const TextSeries& series) { return arrayOf(series); }
HyArray* newArrayBelowZero() { return newVariants(1, -1); }

void putPlain(HyVariant& to, const std::vector<std::int32_t>& series) { putElements(to, HY_VT_I4, series); }
void putPlain(HyVariant& to, const LightSeries& series) { putElements(to, HY_VT_R4, series); }
void putPlain(HyVariant& to, const TristateSeries& series) { putElements(to, HY_VT_I1, series); }
void putPlain(HyVariant& to, const ByteSeries& series) { putElements(to, HY_VT_UI1, series); }
void putPlain(HyVariant& to, const DateSeries& series) { putElements(to, HY_VT_DATE, series); }

void takeSeries(const HyVariant& value, std::vector<std::int32_t>& series) { takeElements(value, series); }
void takeSeries(const HyVariant& value, LightSeries& series) { takeElements(value, series); }
void takeSeries(const HyVariant& value, TristateSeries& series) { takeElements(value, series); }
void takeSeries(const HyVariant& value, ByteSeries& series) { takeElements(value, series); }

}  // namespace hy_wristlog::component
