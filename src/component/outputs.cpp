#include "component/outputs.h"

#include <utility>

#include "component/refusal.h"

namespace hy_wristlog::component {
namespace {

bool canHold(std::uint16_t variable, std::uint16_t type) {
  if (variable == type) return true;
  switch (type) {
    case HY_VT_I4:
      return variable == HY_VT_INT;
    case HY_VT_R4:
      return variable == HY_VT_R8;
    case HY_VT_DISPATCH:
      return variable == HY_VT_UNKNOWN;
    default:
      return false;
  }
}

/// The reference that an argument holds: its own, or that of the variant that it refers to.
const HyVariant& referenceOf(const HyVariant& argument) {
  const bool nested = argument.vt == (HY_VT_BYREF | HY_VT_VARIANT) && argument.pvarVal != nullptr &&
                      argument.pvarVal->vt & HY_VT_BYREF;
  return nested ? *argument.pvarVal : argument;
}

}  // namespace

void requireVariable(const HyVariant& argument, std::uint16_t type) {
  const HyVariant& reference = referenceOf(argument);
  if (!(reference.vt & HY_VT_BYREF)) return;
  if (reference.byref == nullptr) throw Refusal{HY_E_POINTER};
  const auto variable = static_cast<std::uint16_t>(reference.vt & ~HY_VT_BYREF);
  if (variable == HY_VT_VARIANT ? &reference != &argument : !canHold(variable, type))
    throw Refusal{HY_DISP_E_TYPEMISMATCH};
}

void assignVariable(const HyVariant& argument, HyVariant value) {
  const HyVariant& reference = referenceOf(argument);
  HyVariant former{};
  former.vt = static_cast<std::uint16_t>(reference.vt & ~HY_VT_BYREF);
  // The former value is freed last, because that may run code of the host.
  switch (former.vt) {
    case HY_VT_VARIANT:
      former = std::exchange(*reference.pvarVal, value);
      break;
    case HY_VT_BSTR:
      former.bstrVal = std::exchange(*reference.pbstrVal, value.bstrVal);
      break;
    case HY_VT_DISPATCH:
    case HY_VT_UNKNOWN:
      former.pdispVal = std::exchange(*reference.ppdispVal, value.pdispVal);
      break;
    case HY_VT_R4:
      *reference.pfltVal = value.fltVal;
      break;
    case HY_VT_R8:
      *reference.pdblVal = static_cast<double>(value.fltVal);
      break;
    case HY_VT_BOOL:
      *reference.pboolVal = value.boolVal;
      break;
    case HY_VT_I4:
    case HY_VT_INT:
      *reference.plVal = value.lVal;
      break;
  }
  hyVariantClear(&former);
}

}  // namespace hy_wristlog::component
