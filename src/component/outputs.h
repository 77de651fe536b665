#pragma once

#include <cstdint>

#include "hy_wristlog/component.h"

namespace hy_wristlog::component {

/// Refuses a reference to a variable that cannot hold a value of `type`.
void requireVariable(const HyVariant& argument, std::uint16_t type);

/// Gives the variable that `argument` refers to a value, which passes into its ownership, and frees what it
/// held. The variable has passed requireVariable.
void assignVariable(const HyVariant& argument, HyVariant value);

}  // namespace hy_wristlog::component
