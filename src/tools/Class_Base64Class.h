#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hy_wristlog {

/// Base64 with "=" padding (RFC 2045).
class Class_Base64Class {
 public:
  /// The text, with CR LF after every 76 characters but not at its end.
  static std::string fncEncodeByteArray(std::span<const std::uint8_t> bytes);

  /// The bytes of a text. Line ends and "=" are skipped. Nothing is checked: characters outside the alphabet
  /// count as "A", and a group that lacks characters is left out unless "=" completes it. Text for less than
  /// one byte gives none.
  static std::vector<std::uint8_t> fncDecodeToByteArray(std::string_view text);
};

}  // namespace hy_wristlog
