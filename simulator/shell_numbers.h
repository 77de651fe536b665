#pragma once

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace hy_wristlog::simulator {

/// The number after `prefix`. No value unless the line is the prefix and a number that fits 32 bits (signed
/// in decimal, unsigned in hexadecimal).
inline std::optional<std::int64_t> numberBehind(std::string_view line, std::string_view prefix,
                                                int base = 10) {
  if (!line.starts_with(prefix)) return std::nullopt;
  line.remove_prefix(prefix.size());
  if (base == 16 && line.starts_with('-')) return std::nullopt;
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), value, base);
  if (error != std::errc{} || end != line.data() + line.size()) return std::nullopt;
  const bool fits = base == 16 ? value <= std::numeric_limits<std::uint32_t>::max()
                               : value == static_cast<std::int32_t>(value);
  return fits ? std::optional{value} : std::nullopt;
}

/// The switch after `prefix`: "1" is on and "0" is off.
inline std::optional<bool> switchBehind(std::string_view line, std::string_view prefix) {
  if (!line.starts_with(prefix)) return std::nullopt;
  line.remove_prefix(prefix.size());
  if (line != "0" && line != "1") return std::nullopt;
  return line == "1";
}

}  // namespace hy_wristlog::simulator
