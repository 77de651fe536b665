#pragma once

#include <cstdint>
#include <string>

#include "component/refusal.h"
#include "hy_wristlog/component.h"

/// Reads values out of what a host passes. A value that cannot be converted is refused with
/// HY_DISP_E_TYPEMISMATCH, HY_DISP_E_OVERFLOW or HY_DISP_E_BADVARTYPE.
namespace hy_wristlog::component {

/// `variant` itself, or the value that it refers to. The result owns nothing.
HyVariant valueOf(const HyVariant& variant);

/// Whether an optional argument was left out.
inline bool isMissing(const HyVariant& value) {
  return value.vt == HY_VT_ERROR && value.scode == HY_DISP_E_PARAMNOTFOUND;
}

/// The size of a plain type in memory. Refuses a type that no variable can have.
std::size_t sizeOf(std::uint16_t type);

// The arguments of these are results of valueOf.
std::int64_t wholeNumberOf(const HyVariant& value, std::int64_t least, std::int64_t most);
double realNumberOf(const HyVariant& value);
float singleOf(const HyVariant& value);
bool truthOf(const HyVariant& value);
std::string textOf(const HyVariant& value);

}  // namespace hy_wristlog::component
