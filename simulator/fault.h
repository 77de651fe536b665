#pragma once

#include <cstdint>

namespace hy_wristlog::simulator {

// The faults themselves are members of the parts that fail: varden_shell.h (a logger's commands), xmodem.h,
// pendrel_shell.h, line.h (the cable), dock.h, simulated_world.h (files, devices, time).

/// A fault that strikes some occurrences of what it is about: it lets `Skip` of them pass, then spoils
/// `Times` of them (`Always`: all that follow). The default never strikes.
struct Fault {
  static constexpr std::int32_t Always = -1;

  std::int32_t Skip = 0;
  std::int32_t Times = 0;

  /// Counts one occurrence and says whether it is spoilt.
  bool strikes() {
    if (Times == 0) return false;
    if (Skip > 0) {
      --Skip;
      return false;
    }
    if (Times > 0) --Times;
    return true;
  }
};

inline constexpr Fault once(std::int32_t skip = 0) { return {skip, 1}; }
inline constexpr Fault always() { return {0, Fault::Always}; }

}  // namespace hy_wristlog::simulator
