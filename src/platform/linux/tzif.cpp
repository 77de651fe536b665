#include "platform/linux/tzif.h"

#include <cstddef>
#include <cstdint>

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t HeaderSize = 44;
/// The size of a moment in the second block.
constexpr std::size_t TimeSize = 8;
/// The last second, in 2038, that 32 bits can count from 1970. Files of some systems have a change then that
/// changes nothing.
constexpr std::uint64_t LastOf32Bits = 2147483647;

std::uint64_t count(std::string_view file, std::size_t offset) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(file[offset + i]);
  return value;
}

/// The size of the header and data block at the start of `file`; `timeSize` is 4 in the first block and 8
/// in the second.
std::optional<std::size_t> blockSize(std::string_view file, std::uint64_t timeSize) {
  if (file.size() < HeaderSize || file.substr(0, 4) != "TZif") return std::nullopt;
  const std::uint64_t utIndicators = count(file, 20), standardIndicators = count(file, 24),
                      leapSeconds = count(file, 28), transitions = count(file, 32), types = count(file, 36),
                      characters = count(file, 40);
  const std::uint64_t size = HeaderSize + transitions * (timeSize + 1) + types * 6 + characters +
                             leapSeconds * (timeSize + 4) + standardIndicators + utIndicators;
  if (size > file.size()) return std::nullopt;
  return static_cast<std::size_t>(size);
}

/// The file from its second block on, which is all there.
std::optional<std::string_view> secondBlock(std::string_view file) {
  const auto first = blockSize(file, 4);
  if (!first || file[4] < '2') return std::nullopt;
  file.remove_prefix(*first);
  return blockSize(file, TimeSize) ? std::optional(file) : std::nullopt;
}

}  // namespace

std::optional<std::string_view> tzifFooter(std::string_view file) {
  const auto second = secondBlock(file);
  if (!second) return std::nullopt;
  file = second->substr(*blockSize(*second, TimeSize));
  if (file.empty() || file.front() != '\n') return std::nullopt;
  file.remove_prefix(1);
  const std::size_t end = file.find('\n');
  if (end == std::string_view::npos || end == 0) return std::nullopt;
  return file.substr(0, end);
}

bool tzifOutlivesRule(std::string_view file) {
  const auto block = secondBlock(file);
  if (!block) return false;
  const auto transitions = static_cast<std::size_t>(count(*block, 32));
  if (transitions == 0) return false;
  const std::size_t last = HeaderSize + (transitions - 1) * TimeSize;
  const std::uint64_t high = count(*block, last), low = count(*block, last + 4);
  constexpr std::uint64_t SignBit = std::uint64_t{1} << 31;
  return high < SignBit && (high << 32 | low) > LastOf32Bits;
}

}  // namespace hy_wristlog::platform
