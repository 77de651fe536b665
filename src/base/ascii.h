#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace hy_wristlog {

inline char asciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
inline char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline std::string asciiUpper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return asciiUpper(c); });
  return text;
}

inline std::string asciiLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return asciiLower(c); });
  return text;
}

inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return asciiLower(x) == asciiLower(y); });
}

/// The text without the blanks (code 32 alone) at both ends.
inline std::string_view trimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// The text up to its first NUL.
inline std::string_view cutAtNul(std::string_view text) { return text.substr(0, text.find('\0')); }

}  // namespace hy_wristlog
