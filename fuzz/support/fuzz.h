#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "hy_wristlog/failure.h"

/// What the fuzzers' targets have in common. A target gets one input, and calls `finding` when what it did
/// with it was wrong; a crash, a sanitizer's report and any exception but a named Failure count as well.
namespace hy_wristlog::fuzz {

/// Says what is wrong and ends the process.
[[noreturn]] void finding(const std::string& what);

inline void require(bool condition, const char* what) {
  if (!condition) finding(what);
}

/// Whether the number stands in failure_numbers.inc as one of a failure.
bool isNamed(std::int32_t number);

/// Keeps the greatest and the sum of what inputs came to; told when the process ends.
void reached(const char* what, std::int64_t count);

/// The number of the failure that `step` raises, 0 for none. One without a name is a finding, and an internal
/// one: what it stands for must not happen.
template <class Step>
std::int32_t failureOf(Step&& step) {
  try {
    std::forward<Step>(step)();
  } catch (const Failure& failure) {
    if (!isNamed(failure.Number) || failure.Number == FailureNumber::Internal)
      finding("failure " + std::to_string(failure.Number) + ": " + failure.Description);
    return failure.Number;
  }
  return 0;
}

/// The target's work on one input.
void run(std::string_view input);

}  // namespace hy_wristlog::fuzz
