#include "tools/Class_Base64Class.h"

#include <algorithm>
#include <array>

namespace hy_wristlog {
namespace {

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t LineLength = 76;

constexpr std::array<std::uint8_t, 256> inverseAlphabet() {
  std::array<std::uint8_t, 256> inverse{};
  for (std::size_t i = 0; i < Alphabet.size(); ++i)
    inverse[static_cast<std::uint8_t>(Alphabet[i])] = static_cast<std::uint8_t>(i);
  return inverse;
}

constexpr auto Inverse = inverseAlphabet();

void removeLineEnds(std::string& text) {
  for (auto end = text.find("\r\n"); end != std::string::npos; end = text.find("\r\n", end))
    text.erase(end, 2);
}

}  // namespace

std::string Class_Base64Class::fncEncodeByteArray(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4 + bytes.size() / 57 * 2);
  std::size_t column = 0;
  for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(bytes.size(), 3))) {
    if (column == LineLength) {
      text += "\r\n";
      column = 0;
    }
    const std::uint32_t second = bytes.size() > 1 ? bytes[1] : 0U;
    const std::uint32_t third = bytes.size() > 2 ? bytes[2] : 0U;
    const std::uint32_t group = bytes[0] * 65536U + second * 256U + third;
    text += Alphabet[group >> 18U];
    text += Alphabet[group >> 12U & 63U];
    text += bytes.size() > 1 ? Alphabet[group >> 6U & 63U] : '=';
    text += bytes.size() > 2 ? Alphabet[group & 63U] : '=';
    column += 4;
  }
  return text;
}

std::vector<std::uint8_t> Class_Base64Class::fncDecodeToByteArray(std::string_view text) {
  std::string digits(text);
  removeLineEnds(digits);
  const std::size_t whole = digits.size() / 4 * 3;
  const std::size_t padding = std::erase(digits, '=');
  const std::size_t size = whole > padding ? whole - padding : 0;

  const auto digit = [&](std::size_t i) -> std::uint32_t {
    return i < digits.size() ? Inverse[static_cast<std::uint8_t>(digits[i])] : 0U;
  };
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t first = i / 3 * 4 + i % 3;
    const std::size_t shift = i % 3 * 2;
    bytes[i] = static_cast<std::uint8_t>(digit(first) << (2 + shift) | digit(first + 1) >> (4 - shift));
  }
  return bytes;
}

}  // namespace hy_wristlog
