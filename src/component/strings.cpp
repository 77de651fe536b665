#include "component/strings.h"

#include <new>
#include <vector>

#include "base/ascii.h"
#include "component/refusal.h"

namespace hy_wristlog::component {
namespace {

constexpr char32_t Replacement = 0xFFFD;
/// Far above any text of the library, far below what would exhaust the machine.
constexpr std::uint32_t MostUnits = 1U << 26;

/// Removes one code point from the front of `text`. Invalid bytes give U+FFFD; a byte that may begin the next
/// code point is left.
char32_t takeCodePoint(std::string_view& text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byteAt(0);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  std::size_t taken = 1;
  char32_t point = length == 1 ? lead : lead & (0x7FU >> length);
  bool valid = length > 0 && lead < 0xF5;
  while (valid && taken < length) {
    if (taken == text.size() || (byteAt(taken) & 0xC0U) != 0x80) {
      valid = false;
      break;
    }
    point = point << 6U | (byteAt(taken) & 0x3FU);
    ++taken;
  }
  constexpr char32_t Least[] = {0, 0, 0x80, 0x800, 0x10000};
  if (valid) valid = point >= Least[length] && point <= 0x10FFFF && (point < 0xD800 || point > 0xDFFF);
  text.remove_prefix(taken);
  return valid ? point : Replacement;
}

void appendUtf8(std::string& text, char32_t point) {
  const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80U | (point >> shift & 0x3FU)); };
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0U | point >> 6U);
    tail(0);
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0U | point >> 12U);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | point >> 18U);
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

HyString newString(std::string_view utf8) {
  std::vector<std::uint16_t> units;
  units.reserve(utf8.size());
  while (!utf8.empty()) {
    const char32_t point = takeCodePoint(utf8);
    if (point < 0x10000) {
      units.push_back(static_cast<std::uint16_t>(point));
    } else {
      units.push_back(static_cast<std::uint16_t>(0xD7C0 + (point >> 10U)));
      units.push_back(static_cast<std::uint16_t>(0xDC00 | (point & 0x3FFU)));
    }
  }
  if (units.size() > MostUnits) throw std::bad_alloc();
  HyString string = hyStringAllocate(units.data(), static_cast<std::uint32_t>(units.size()));
  if (string == nullptr) throw std::bad_alloc();
  return string;
}

std::string textOf(HyString string) {
  const std::uint32_t length = hyStringLength(string);
  if (length > MostUnits) throw Refusal{HY_E_INVALIDARG};
  std::string text;
  text.reserve(length);
  for (std::uint32_t i = 0; i < length; ++i) {
    const char32_t unit = string[i];
    if (unit < 0xD800 || unit > 0xDFFF) {
      appendUtf8(text, unit);
    } else if (unit < 0xDC00 && i + 1 < length && string[i + 1] >= 0xDC00 && string[i + 1] <= 0xDFFF) {
      ++i;
      appendUtf8(text, 0x10000 + ((unit & 0x3FFU) << 10U) + (string[i] & 0x3FFU));
    } else {
      appendUtf8(text, Replacement);
    }
  }
  return text;
}

bool isName(const uint16_t* units, const char* name) {
  for (;; ++units, ++name) {
    if (*units > 0x7F || asciiLower(static_cast<char>(*units)) != asciiLower(*name)) return false;
    if (*name == '\0') return true;
  }
}

}  // namespace hy_wristlog::component
