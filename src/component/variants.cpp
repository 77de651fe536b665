#include "component/variants.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "base/ascii.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "component/strings.h"
#include "hy_wristlog/failure.h"

namespace hy_wristlog::component {
namespace {

constexpr double CurrencyUnits = 10000;

[[noreturn]] void refuse(HyResult result) { throw Refusal{result}; }

double numberOfText(const HyVariant& value) {
  const std::string text = textOf(value.bstrVal);
  if (const auto number = parseNumber(text)) return *number;
  // The value of a numeric text can only be missing because it is too large.
  refuse(isNumeric(text) ? HY_DISP_E_OVERFLOW : HY_DISP_E_TYPEMISMATCH);
}

/// None when the value is not a whole number by its type.
std::optional<std::int64_t> wholeNumber(const HyVariant& value) {
  switch (value.vt) {
    case HY_VT_EMPTY:
      return 0;
    case HY_VT_I1:
      return value.cVal;
    case HY_VT_I2:
      return value.iVal;
    case HY_VT_I4:
    case HY_VT_INT:
      return value.lVal;
    case HY_VT_I8:
      return value.llVal;
    case HY_VT_UI1:
      return value.bVal;
    case HY_VT_UI2:
      return value.uiVal;
    case HY_VT_UI4:
    case HY_VT_UINT:
      return value.ulVal;
    case HY_VT_UI8:
      if (value.ullVal > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        refuse(HY_DISP_E_OVERFLOW);
      return value.llVal;
    case HY_VT_BOOL:
      return value.boolVal != HY_FALSE ? -1 : 0;
    default:
      return std::nullopt;
  }
}

double realNumber(const HyVariant& value) {
  switch (value.vt) {
    case HY_VT_R4:
      return static_cast<double>(value.fltVal);
    case HY_VT_R8:
    case HY_VT_DATE:
      return value.dblVal;
    case HY_VT_CY:
      return static_cast<double>(value.cyVal) / CurrencyUnits;
    case HY_VT_BSTR:
      return numberOfText(value);
    default:
      if (!(value.vt & HY_VT_ARRAY)) sizeOf(value.vt);
      refuse(HY_DISP_E_TYPEMISMATCH);
  }
}

}  // namespace

std::size_t sizeOf(std::uint16_t type) {
  switch (type) {
    case HY_VT_I1:
    case HY_VT_UI1:
      return 1;
    case HY_VT_I2:
    case HY_VT_UI2:
    case HY_VT_BOOL:
      return 2;
    case HY_VT_I4:
    case HY_VT_UI4:
    case HY_VT_INT:
    case HY_VT_UINT:
    case HY_VT_R4:
    case HY_VT_ERROR:
      return 4;
    case HY_VT_R8:
    case HY_VT_CY:
    case HY_VT_DATE:
    case HY_VT_I8:
    case HY_VT_UI8:
      return 8;
    case HY_VT_BSTR:
    case HY_VT_DISPATCH:
    case HY_VT_UNKNOWN:
      return sizeof(void*);
    case HY_VT_VARIANT:
      return sizeof(HyVariant);
    case HY_VT_EMPTY:
    case HY_VT_NULL:
      return 0;
    default:
      refuse(HY_DISP_E_BADVARTYPE);
  }
}

HyVariant valueOf(const HyVariant& variant) {
  const HyVariant* holder = &variant;
  if (holder->vt == (HY_VT_BYREF | HY_VT_VARIANT)) {
    holder = holder->pvarVal;
    if (holder == nullptr) refuse(HY_E_POINTER);
    if (holder->vt == (HY_VT_BYREF | HY_VT_VARIANT)) refuse(HY_DISP_E_BADVARTYPE);
  }
  HyVariant value = *holder;
  if (value.vt == HY_VT_VARIANT) refuse(HY_DISP_E_BADVARTYPE);
  if (!(value.vt & HY_VT_BYREF)) return value;
  value.vt = static_cast<std::uint16_t>(value.vt & ~HY_VT_BYREF);
  if (holder->byref == nullptr) refuse(HY_E_POINTER);
  const std::size_t size = value.vt & HY_VT_ARRAY ? sizeof(void*) : sizeOf(value.vt);
  if (size == 0) refuse(HY_DISP_E_BADVARTYPE);
  value.llVal = 0;
  std::memcpy(&value.llVal, holder->byref, size);
  return value;
}

std::int64_t wholeNumberOf(const HyVariant& value, std::int64_t least, std::int64_t most) {
  auto whole = wholeNumber(value);
  if (!whole) {
    constexpr double Beyond = 9.2e18;
    const double real = realNumber(value);
    if (!(std::abs(real) < Beyond)) refuse(HY_DISP_E_OVERFLOW);
    whole = roundToInt64(real);
  }
  if (*whole < least || *whole > most) refuse(HY_DISP_E_OVERFLOW);
  return *whole;
}

double realNumberOf(const HyVariant& value) {
  if (value.vt == HY_VT_UI8) return static_cast<double>(value.ullVal);
  const auto whole = wholeNumber(value);
  return whole ? static_cast<double>(*whole) : realNumber(value);
}

float singleOf(const HyVariant& value) {
  const double real = realNumberOf(value);
  if (std::isfinite(real) && std::abs(real) > static_cast<double>(std::numeric_limits<float>::max()))
    refuse(HY_DISP_E_OVERFLOW);
  return static_cast<float>(real);
}

bool truthOf(const HyVariant& value) {
  if (value.vt == HY_VT_BSTR) {
    const std::string text = textOf(value.bstrVal);
    if (equalsIgnoringCase(text, "True")) return true;
    if (equalsIgnoringCase(text, "False")) return false;
  }
  return realNumberOf(value) != 0;
}

std::string textOf(const HyVariant& value) {
  switch (value.vt) {
    case HY_VT_BSTR:
      return textOf(value.bstrVal);
    case HY_VT_EMPTY:
      return {};
    case HY_VT_BOOL:
      return value.boolVal != HY_FALSE ? "True" : "False";
    case HY_VT_DATE:
      try {
        return formatDate(value.date, "c");
      } catch (const Failure&) {
        refuse(HY_DISP_E_OVERFLOW);
      }
    case HY_VT_R4: {
      char digits[32];
      const auto end = std::to_chars(digits, digits + sizeof digits, value.fltVal).ptr;
      double shortest = 0;
      std::from_chars(digits, end, shortest);
      return hy_wristlog::textOf(shortest);
    }
    default:
      if (const auto whole = wholeNumber(value)) return std::to_string(*whole);
      return hy_wristlog::textOf(realNumber(value));
  }
}

}  // namespace hy_wristlog::component
