#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "hy_wristlog/api.h"
#include "hy_wristlog/failure_numbers.h"

namespace hy_wristlog {

/// The one exception type of the library. `Number` tells what went wrong (see FailureNumber, and
/// Class_Main::CodeMeaning for words), `Source` where it was first seen, `Description` says it in words.
struct HY_WRISTLOG_API Failure : std::exception {
  Failure(std::int32_t number, std::string source, std::string description)
      : Number(number), Source(std::move(source)), Description(std::move(description)) {}

  const char* what() const noexcept override { return Description.c_str(); }

  std::int32_t Number;
  std::string Source;
  std::string Description;
};

}  // namespace hy_wristlog
