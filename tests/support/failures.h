#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "hy_wristlog/failure.h"

namespace hy_wristlog {

/// The number and description of the failure that an action ends with; 0 and nothing without one.
template <class Action>
std::pair<std::int32_t, std::string> failureOf(Action action) {
  try {
    action();
  } catch (const Failure& failure) {
    return {failure.Number, failure.Description};
  }
  return {};
}

template <class Action>
std::int32_t numberOf(Action action) {
  return failureOf(std::move(action)).first;
}

}  // namespace hy_wristlog
