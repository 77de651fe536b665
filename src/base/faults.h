#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "hy_wristlog/failure.h"

/// Run-time faults that outside data can cause, raised as Failure with their usual numbers, and the checked
/// operations that raise them.
namespace hy_wristlog::fault {

using namespace FailureNumber;

/// Raises the fault with its usual description; `detail`, when given, is appended.
[[noreturn]] void raise(std::int32_t number, const std::string& detail = {});

/// `container[index]`. Raises Subscript outside.
template <class Container, class Index>
decltype(auto) at(Container& container, Index index) {
  if constexpr (std::is_signed_v<Index>)
    if (index < 0) raise(Subscript);
  if (static_cast<std::size_t>(index) >= container.size()) raise(Subscript);
  return container[static_cast<std::size_t>(index)];
}

/// The value as a `To`. Raises Overflow when it does not fit.
template <class To, class From>
requires std::is_integral_v<To> && std::is_integral_v<From>
constexpr To narrow(From value) {
  const To result = static_cast<To>(value);
  if (static_cast<From>(result) != value || (result < To{}) != (value < From{})) raise(Overflow);
  return result;
}

}  // namespace hy_wristlog::fault
