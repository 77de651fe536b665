#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace hy_wristlog::simulator {

/// CRC-16/XMODEM of the CRC catalogue: polynomial 0x1021, start value 0, nothing reflected.
std::uint16_t checksum(std::span<const std::uint8_t> bytes);
std::uint16_t checksum(std::string_view text);

}  // namespace hy_wristlog::simulator
