#pragma once

#include <cstdint>

/// Names for the numbers of failures and for the return codes of the workflows; docs/contract.md says what
/// each means.
namespace hy_wristlog {

/// `Failure::Number`. A workflow also returns the number of the failure that ended it.
namespace FailureNumber {
#define HY_FAILURE_NUMBER(name, number) inline constexpr std::int32_t name = number;
#include "hy_wristlog/failure_numbers.inc"
}  // namespace FailureNumber

/// What a workflow returns for a state that it has detected itself.
namespace ReturnCode {
#define HY_RETURN_CODE(name, number) inline constexpr std::int32_t name = number;
#include "hy_wristlog/failure_numbers.inc"
}  // namespace ReturnCode

}  // namespace hy_wristlog
