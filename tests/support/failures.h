#pragma once

#include <cstdint>
#include <functional>
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

/// What came of a step, as "number module.procedure: description"; empty when it did not fail.
inline std::string outcome(const std::function<void()>& step) {
  const Failure failure = caught(step);
  if (failure.Number == 0) return {};
  const std::size_t from = failure.Source.find(':') + 1;
  return std::to_string(failure.Number) + ' ' + failure.Source.substr(from, failure.Source.find('@') - from) +
         ": " + failure.Description;
}

}  // namespace hy_wristlog
