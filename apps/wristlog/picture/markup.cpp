#include "picture/markup.h"

#include <charconv>
#include <cmath>

namespace wristlog::picture {
namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";

/// The length of the well-formed UTF-8 sequence at the start of `text`, 0 for none. `point` becomes its code
/// point.
std::size_t sequenceAt(std::string_view text, char32_t& point) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || length > text.size()) return 0;
  constexpr unsigned char LeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  point = lead & LeadBits[length];
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    point = point << 6 | (byte(i) & 0x3Fu);
  }
  constexpr char32_t Shortest[] = {0, 0, 0x80, 0x800, 0x10000};
  return point >= Shortest[length] ? length : 0;
}

/// The C1 controls are left out too: XML allows them, but no reader shows them.
bool isShowable(char32_t point) {
  if (point < 0x20) return point == '\t' || point == '\n' || point == '\r';
  return !(point >= 0x7F && point < 0xA0) && !(point >= 0xD800 && point < 0xE000) && point != 0xFFFE &&
         point != 0xFFFF && point <= 0x10FFFF;
}

std::string_view referenceFor(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    char32_t point = 0;
    const std::size_t length = sequenceAt(text, point);
    const std::string_view reference = referenceFor(text.front());
    if (!reference.empty())
      result += reference;
    else if (length > 0 && isShowable(point))
      result += text.substr(0, length);
    else
      result += Replacement;
    text.remove_prefix(length > 0 ? length : 1);
  }
  return result;
}

std::string number(double value, int decimals) {
  constexpr double Largest = 1e15;
  if (!std::isfinite(value)) return "0";
  char digits[32];
  const char* end =
      std::to_chars(digits, digits + sizeof digits, std::fmin(std::fmax(value, -Largest), Largest),
                    std::chars_format::fixed, decimals)
          .ptr;
  std::string text(digits, static_cast<std::size_t>(end - digits));
  if (decimals > 0) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string capital(std::string words) {
  words.front() = static_cast<char>(words.front() - 'a' + 'A');
  return words;
}

void appendTenths(std::string& text, std::int64_t tenths) {
  char digits[24];
  if (tenths < 0) text += '-';
  const std::int64_t size = tenths < 0 ? -tenths : tenths;
  if (size >= 10 || size == 0)
    text.append(digits, std::to_chars(digits, digits + sizeof digits, size / 10).ptr);
  if (size % 10 != 0) {
    text += '.';
    text += static_cast<char>('0' + size % 10);
  }
}

}  // namespace wristlog::picture
