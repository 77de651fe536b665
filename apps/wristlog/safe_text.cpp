#include "safe_text.h"

#include <cstdint>

namespace wristlog {
namespace {

void appendHex(std::u16string& text, unsigned value, int digits) {
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
    text += u"0123456789ABCDEF"[value >> static_cast<unsigned>(shift) & 15U];
}

/// Takes a character of up to three bytes off the front; 0 when none begins there.
char16_t takeCharacter(std::string_view& text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const auto follows = [&](std::size_t i) { return i < text.size() && (byte(i) & 0xC0U) == 0x80; };
  unsigned character = byte(0);
  std::size_t length = 1;
  if (character >= 0xC2 && character <= 0xDF && follows(1)) {
    character = (character & 0x1FU) << 6U | (byte(1) & 0x3FU);
    length = 2;
  } else if ((character & 0xF0U) == 0xE0 && follows(1) && follows(2)) {
    character = (character & 0x0FU) << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU);
    length = 3;
    if (character < 0x800 || (character >= 0xD800 && character <= 0xDFFF)) return 0;
  } else if (character >= 0x80) {
    return 0;
  }
  text.remove_prefix(length);
  return static_cast<char16_t>(character);
}

/// Letters and signs of the western scripts, typographic signs, the euro and the trade mark.
bool isPlain(char16_t c) {
  constexpr char16_t SoftHyphen = 0xAD;
  return (c >= 0x20 && c <= 0x7E) || (c >= 0xA0 && c <= 0x2FF && c != SoftHyphen) ||
         (c >= 0x2010 && c <= 0x2027) || (c >= 0x2030 && c <= 0x205E) || c == 0x20AC || c == 0x2122;
}

}  // namespace

std::u16string visibleCharacters(std::string_view utf8) {
  std::u16string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    const unsigned byte = static_cast<std::uint8_t>(utf8.front());
    if (byte == '\r' || byte == '\n') {
      utf8.remove_prefix(utf8.starts_with("\r\n") ? 2 : 1);
      text += u'\n';
      continue;
    }
    const bool nul = byte == 0;
    const char16_t c = takeCharacter(utf8);
    if (c == 0) {
      if (!nul) utf8.remove_prefix(1);
      text += u"\\x";
      appendHex(text, byte, 2);
    } else if (isPlain(c)) {
      text += c;
    } else {
      text += c < 0x100 ? u"\\x" : u"\\u";
      appendHex(text, c, c < 0x100 ? 2 : 4);
    }
  }
  return text;
}

std::string utf8Of(std::u16string_view characters) {
  std::string text;
  text.reserve(characters.size());
  const auto append = [&](unsigned byte) { text += static_cast<char>(byte); };
  for (const char16_t c : characters) {
    if (c < 0x80) {
      append(c);
    } else if (c < 0x800) {
      append(0xC0U | c >> 6U);
      append(0x80U | (c & 0x3FU));
    } else {
      append(0xE0U | c >> 12U);
      append(0x80U | (c >> 6U & 0x3FU));
      append(0x80U | (c & 0x3FU));
    }
  }
  return text;
}

}  // namespace wristlog
