#pragma once

#include <cstdint>
#include <string>

namespace wristlog {

/// "1 epoch", "2 epochs": `what` must have a plural in s.
inline std::string counted(std::int64_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace wristlog
