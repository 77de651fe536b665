#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "hy_wristlog/failure.h"

namespace hy_wristlog {

/// The failure that an action ends with; number 0 without one.
template <class Action>
Failure caught(Action action) {
  try {
    action();
  } catch (const Failure& failure) {
    return failure;
  }
  return {0, "", ""};
}

template <class Action>
std::pair<std::int32_t, std::string> failureOf(Action action) {
  const Failure failure = caught(std::move(action));
  return {failure.Number, failure.Description};
}

template <class Action>
std::int32_t numberOf(Action action) {
  return caught(std::move(action)).Number;
}

}  // namespace hy_wristlog
