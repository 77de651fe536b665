#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace hy_wristlog::platform {

using Sha256Digest = std::array<std::uint8_t, 32>;

/// SHA-256 (FIPS 180-4). It is no part of `Platform`, since it is the same in every world. Raises
/// SystemError.
Sha256Digest sha256(std::span<const std::uint8_t> bytes);

}  // namespace hy_wristlog::platform
