#include "base/code_page.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace hy_wristlog {
namespace {

/// What 0x80 to 0x9F stand for; all other codes are the characters of the same number.
constexpr std::array<char16_t, 32> UpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::uint8_t Unknown = '?';
constexpr char32_t NoCharacter = 0xFFFFFFFF;

void appendUtf8(std::string& text, char16_t character) {
  const auto append = [&](unsigned code) { text += static_cast<char>(code); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0U | character >> 6U);
    append(0x80U | (character & 0x3FU));
  } else {
    append(0xE0U | character >> 12U);
    append(0x80U | (character >> 6U & 0x3FU));
    append(0x80U | (character & 0x3FU));
  }
}

/// Takes one character off the front. A byte that begins none is taken alone and gives NoCharacter.
char32_t takeCharacter(std::string_view& text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byteAt(0);
  std::size_t length = 1;
  char32_t character = lead;
  char32_t lowest = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, character = lead & 0x1FU, lowest = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, character = lead & 0x0FU, lowest = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, character = lead & 0x07U, lowest = 0x10000;
  } else if (lead >= 0x80) {
    character = NoCharacter;
  }
  bool whole = length <= text.size();
  for (std::size_t i = 1; whole && i < length; ++i) {
    whole = (byteAt(i) & 0xC0U) == 0x80;
    character = character << 6U | (byteAt(i) & 0x3FU);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (!whole || character < lowest || surrogate || (length == 4 && character > 0x10FFFF)) {
    length = 1;
    character = NoCharacter;
  }
  text.remove_prefix(length);
  return character;
}

std::uint8_t ansiCode(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
    return static_cast<std::uint8_t>(character);
  const auto found = std::find(UpperControls.begin(), UpperControls.end(), character);
  if (found == UpperControls.end()) return Unknown;
  return static_cast<std::uint8_t>(0x80 + std::distance(UpperControls.begin(), found));
}

template <class Bytes>
std::string toUtf8(const Bytes& bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const auto element : bytes) {
    const auto byte = static_cast<std::uint8_t>(element);
    appendUtf8(text, byte >= 0x80 && byte <= 0x9F ? UpperControls[byte - 0x80U] : byte);
  }
  return text;
}

}  // namespace

std::string utf8FromAnsi(std::span<const std::uint8_t> bytes) { return toUtf8(bytes); }
std::string utf8FromAnsiText(std::string_view ansi) { return toUtf8(ansi); }

std::vector<std::uint8_t> ansiFromUtf8(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size());
  while (!text.empty()) bytes.push_back(ansiCode(takeCharacter(text)));
  return bytes;
}

std::string ansiTextFromUtf8(std::string_view utf8) {
  const auto bytes = ansiFromUtf8(utf8);
  return {bytes.begin(), bytes.end()};
}

std::optional<std::u16string> utf16FromUtf8(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  while (!text.empty()) {
    const char32_t character = takeCharacter(text);
    if (character == NoCharacter) return std::nullopt;
    if (character < 0x10000) {
      units += static_cast<char16_t>(character);
    } else {
      units += static_cast<char16_t>(0xD7C0U + (character >> 10U));
      units += static_cast<char16_t>(0xDC00U | (character & 0x3FFU));
    }
  }
  return units;
}

}  // namespace hy_wristlog
