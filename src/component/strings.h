#pragma once

#include <string>
#include <string_view>

#include "hy_wristlog/component.h"

/// Text for hosts is counted UTF-16, text of the library UTF-8. NULs are characters like others; an invalid
/// sequence becomes U+FFFD.
namespace hy_wristlog::component {

/// The caller frees the string. Raises bad_alloc.
HyString newString(std::string_view utf8);
/// Refuses a length that no text can have, which shows a bad pointer.
std::string textOf(HyString string);
/// Compares a NUL-terminated name, ignoring ASCII case.
bool isName(const uint16_t* units, const char* name);

}  // namespace hy_wristlog::component
