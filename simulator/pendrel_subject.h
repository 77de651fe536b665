#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hy_wristlog::simulator {

/// The subject, as a Pendrel logger's subject text holds it.
struct PendrelSubject {
  std::string Identity, Initials;  ///< at most 23 and 3 characters
  char Gender = 'F';
  bool AdjustsToDaylight = true;
  std::string Zone = "EST";     ///< three characters
  std::string Guid;             ///< 32 hexadecimal digits
  std::uint16_t BirthDay = 0;   ///< days since 30 December 1899
  std::int16_t ZoneOffset = 0;  ///< minutes that local time adds to UTC
  std::uint16_t HeightTenths = 0, WeightTenths = 0;
  bool operator==(const PendrelSubject&) const = default;
};

/// The subject as a text of 64 characters.
std::string encode(const PendrelSubject& subject);
/// No value for a text that `encode` cannot have made.
std::optional<PendrelSubject> decodePendrelSubject(std::string_view text);

}  // namespace hy_wristlog::simulator
