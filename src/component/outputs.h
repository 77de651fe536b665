#pragma once

#include <cstdint>

#include "hy_wristlog/component.h"

namespace hy_wristlog::component {

/// Refuses a reference to a variable that cannot hold a value of `type`.
void requireVariable(const HyVariant& argument, std::uint16_t type);

/// Moves `value` into the variable that `argument` refers to and frees the former value. requireVariable must
/// have accepted the variable.
void assignVariable(const HyVariant& argument, HyVariant value);

}  // namespace hy_wristlog::component
