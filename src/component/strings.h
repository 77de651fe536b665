#pragma once

#include <string>
#include <string_view>

#include "hy_wristlog/component.h"

/// Text at the boundary: counted UTF-16 outside, UTF-8 inside. NULs are characters like others; what is not
/// valid on one side becomes U+FFFD on the other.
namespace hy_wristlog::component {

/// The caller's to free; raises bad_alloc.
HyString newString(std::string_view utf8);
/// Refuses lengths that no text has.
std::string textOf(HyString string);
/// Compares a NUL-terminated name, ignoring ASCII case.
bool isName(const uint16_t* units, const char* name);

}  // namespace hy_wristlog::component
