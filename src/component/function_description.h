#pragma once

#include <cstddef>
#include <span>

#include "component/members.h"

namespace hy_wristlog::component {

/// The number of operations. The index of a description counts them in slot order.
std::size_t functionCount(std::span<const Member> members);

/// The description of an operation in one block of memory, which the caller frees with `free`; null past the
/// last one. `referenceOf` gives the reference of the interface of a class. Raises bad_alloc.
HyFuncDesc* newFunctionDescription(std::span<const Member> members, std::size_t index,
                                   std::uint32_t (*referenceOf)(const ClassTable&));

}  // namespace hy_wristlog::component
