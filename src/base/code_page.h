#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Text inside the library is UTF-8; on the wire and in the loggers' records it is one byte a character in
/// code page 1252 (WHATWG Encoding Standard, index windows-1252: the five free codes map to C1 controls).
namespace hy_wristlog {

std::string utf8FromAnsi(std::span<const std::uint8_t> bytes);

/// Characters outside the code page, and bytes that are not UTF-8, become "?".
std::vector<std::uint8_t> ansiFromUtf8(std::string_view text);

/// The same conversions for ANSI text that is kept in a std::string.
std::string utf8FromAnsiText(std::string_view ansi);
std::string ansiTextFromUtf8(std::string_view utf8);

/// The text in UTF-16; none for text that is not UTF-8.
std::optional<std::u16string> utf16FromUtf8(std::string_view text);

}  // namespace hy_wristlog
