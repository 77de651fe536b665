#include "words/safe_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace wristlog {
namespace {

void appendHex(std::u16string& text, std::uint32_t value, int digits) {
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
    text += u"0123456789ABCDEF"[value >> static_cast<unsigned>(shift) & 15U];
}

/// Takes the first character off the text; 0, and nothing taken, when no character begins there.
char32_t takeCharacter(std::string_view& text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80                     ? 1
                             : first >= 0xC2 && first <= 0xDF ? 2
                             : (first & 0xF0U) == 0xE0        ? 3
                             : first >= 0xF0 && first <= 0xF4 ? 4
                                                              : 0;
  if (length == 0 || length > text.size()) return 0;
  char32_t character = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return 0;
    character = character << 6U | (byte(i) & 0x3FU);
  }
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if ((length == 3 && character < 0x800) || (length == 4 && character < 0x10000) || isSurrogate ||
      character > 0x10FFFF)
    return 0;
  text.remove_prefix(length);
  return character;
}

/// Takes the first character, or a first byte that belongs to none, and appends it: unchanged when `isShown`
/// allows it, else as a number.
template <class Shown, class Append>
void takeVisible(std::string_view& text, const Shown& isShown, const Append& append) {
  const unsigned byte = static_cast<std::uint8_t>(text.front());
  const std::string_view former = text;
  const char32_t c = takeCharacter(text);
  std::u16string number;
  if (c == 0 || (c > 0xFFFF && !isShown(c))) {
    text = former.substr(1);
    number = u"\\x";
    appendHex(number, byte, 2);
  } else if (isShown(c)) {
    return append(former.substr(0, former.size() - text.size()), c);
  } else {
    number = c < 0x100 ? u"\\x" : u"\\u";
    appendHex(number, c, c < 0x100 ? 2 : 4);
  }
  for (const char16_t character : number) append(std::string(1, static_cast<char>(character)), character);
}

/// Letters and signs of the western scripts, typographic signs, the euro and the trade mark.
bool isPlain(char32_t c) {
  constexpr char32_t SoftHyphen = 0xAD;
  return (c >= 0x20 && c <= 0x7E) || (c >= 0xA0 && c <= 0x2FF && c != SoftHyphen) ||
         (c >= 0x2010 && c <= 0x2027) || (c >= 0x2030 && c <= 0x205E) || c == 0x20AC || c == 0x2122;
}

struct Range {
  char32_t First, Last;
};

/// Control characters, line separators, direction marks, invisible characters, and values that are no
/// character.
constexpr std::array<Range, 15> Unseen{{{0x00, 0x1F},
                                        {0x7F, 0x9F},
                                        {0xAD, 0xAD},
                                        {0x61C, 0x61C},
                                        {0x180E, 0x180E},
                                        {0x200B, 0x200B},
                                        {0x200E, 0x200F},
                                        {0x2028, 0x202E},
                                        {0x2060, 0x206F},
                                        {0xFE00, 0xFE0E},
                                        {0xFEFF, 0xFEFF},
                                        {0xFFF0, 0xFFFB},
                                        {0xFFFE, 0xFFFF},
                                        {0xE0000, 0xE0FFF},
                                        {0x10FFFE, 0x10FFFF}}};

bool isSeen(char32_t c) {
  return std::none_of(Unseen.begin(), Unseen.end(),
                      [&](const Range& range) { return c >= range.First && c <= range.Last; });
}

}  // namespace

std::u16string visibleCharacters(std::string_view utf8) {
  std::u16string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) {
    if (utf8.front() == '\r' || utf8.front() == '\n') {
      utf8.remove_prefix(utf8.starts_with("\r\n") ? 2 : 1);
      text += u'\n';
      continue;
    }
    takeVisible(utf8, isPlain,
                [&](std::string_view, char32_t character) { text += static_cast<char16_t>(character); });
  }
  return text;
}

std::string safeLine(std::string_view utf8) {
  std::string text;
  text.reserve(utf8.size());
  while (!utf8.empty()) takeVisible(utf8, isSeen, [&](std::string_view shown, char32_t) { text += shown; });
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
