#pragma once

#include <cstdint>
#include <string>

#include "component/refusal.h"
#include "hy_wristlog/component.h"

/// Reading values out of what a host passes. All refuse with HY_DISP_E_TYPEMISMATCH, HY_DISP_E_OVERFLOW or
/// HY_DISP_E_BADVARTYPE what cannot be the wanted value.
namespace hy_wristlog::component {

/// The value itself when `variant` refers to one. Owns nothing.
HyVariant valueOf(const HyVariant& variant);

/// Whether an optional argument was left out.
inline bool isMissing(const HyVariant& value) {
  return value.vt == HY_VT_ERROR && value.scode == HY_DISP_E_PARAMNOTFOUND;
}

/// The size of a plain type in memory; refuses what is no type of a variable.
std::size_t sizeOf(std::uint16_t type);

// These take what valueOf gives.
std::int64_t wholeNumberOf(const HyVariant& value, std::int64_t least, std::int64_t most);
double realNumberOf(const HyVariant& value);
float singleOf(const HyVariant& value);
bool truthOf(const HyVariant& value);
std::string textOf(const HyVariant& value);

}  // namespace hy_wristlog::component
