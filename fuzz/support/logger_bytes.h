#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// What a logger without faults would send; the same for the same seed.
namespace hy_wristlog::fuzz {

std::vector<std::uint8_t> anyBytes(std::size_t count, std::int64_t seed);
/// A Kestrin Vivid's config block.
std::vector<std::uint8_t> configBlock(std::int64_t mode, std::int64_t seed);
/// An activity recording that starts on 2020-01-01.
std::vector<std::uint8_t> activityRecording(std::int64_t epochs, std::int64_t seed);

}  // namespace hy_wristlog::fuzz
