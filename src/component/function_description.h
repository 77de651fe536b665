#pragma once

#include <cstddef>
#include <span>

#include "component/members.h"

namespace hy_wristlog::component {

/// How many operations there are; a description counts through them in slot order.
std::size_t functionCount(std::span<const Member> members);

/// One block of memory, to be given back with `free`; null past the last operation. `referenceOf` tells the
/// reference of a class's interface. Raises bad_alloc.
HyFuncDesc* newFunctionDescription(std::span<const Member> members, std::size_t index,
                                   std::uint32_t (*referenceOf)(const ClassTable&));

}  // namespace hy_wristlog::component
