#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The fixed rule that pairs COM port numbers with devices: ttyS0..31 are 1..32, ttyUSB0..15 33..48,
/// ttyACM0..15 49..64; later ttyUSB are 65, 67, ... and later ttyACM 66, 68, ...
namespace hy_wristlog::platform {

inline constexpr std::int32_t HighestPortNumber = 32767;

/// "ttyUSB0" gives 33; 0 when the rule has no number for the name.
std::int32_t portNumberOfTty(std::string_view name);

/// 33 gives "ttyUSB0"; empty outside 1 to HighestPortNumber.
std::string ttyOfPortNumber(std::int32_t number);

}  // namespace hy_wristlog::platform
