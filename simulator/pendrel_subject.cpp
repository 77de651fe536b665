#include "simulator/pendrel_subject.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace hy_wristlog::simulator {
namespace {

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t GuidSize = 16, PackedSize = 24, TextSize = 64;

using Packed = std::array<std::uint8_t, PackedSize>;

std::string padded(std::string_view text, std::size_t width) {
  std::string field{text.substr(0, width)};
  field.resize(width, ' ');
  return field;
}

std::string trimmed(std::string_view text) {
  return std::string{text.substr(0, text.find_last_not_of(' ') + 1)};
}

void putWord(Packed& packed, std::size_t at, unsigned word) {
  packed[at] = static_cast<std::uint8_t>(word >> 8);
  packed[at + 1] = static_cast<std::uint8_t>(word & 0xFF);
}

std::uint16_t word(const Packed& packed, std::size_t at) {
  return static_cast<std::uint16_t>(packed[at] * 256 + packed[at + 1]);
}

/// Base 64 of RFC 4648. The length is a multiple of three bytes, so no padding is needed.
std::string base64(const Packed& packed) {
  std::string text;
  for (std::size_t at = 0; at < PackedSize; at += 3) {
    const unsigned bits = packed[at] * 65536U + packed[at + 1] * 256U + packed[at + 2];
    for (const unsigned shift : {18U, 12U, 6U, 0U}) text += Alphabet[(bits >> shift) & 63U];
  }
  return text;
}

std::optional<Packed> unpacked(std::string_view text) {
  Packed packed{};
  for (std::size_t group = 0; group * 4 < text.size(); ++group) {
    std::size_t bits = 0;
    for (const char c : text.substr(group * 4, 4)) {
      const std::size_t value = Alphabet.find(c);
      if (value == std::string_view::npos) return std::nullopt;
      bits = bits * 64 + value;
    }
    for (std::size_t i = 0; i < 3; ++i)
      packed[group * 3 + i] = static_cast<std::uint8_t>((bits >> (16 - 8 * i)) & 0xFF);
  }
  return packed;
}

}  // namespace

std::string encode(const PendrelSubject& subject) {
  Packed packed{};
  const std::string_view guid = subject.Guid;
  for (std::size_t i = 0; i < GuidSize && 2 * i + 2 <= guid.size(); ++i)
    std::from_chars(guid.data() + 2 * i, guid.data() + 2 * i + 2, packed[i], 16);
  putWord(packed, 16, subject.BirthDay);
  putWord(packed, 18, static_cast<std::uint16_t>(subject.ZoneOffset));
  putWord(packed, 20, subject.HeightTenths);
  putWord(packed, 22, subject.WeightTenths);
  return padded(subject.Identity, 23) + padded(subject.Initials, 3) + subject.Gender +
         (subject.AdjustsToDaylight ? 'T' : 'F') + padded(subject.Zone, 3) + base64(packed) + '2';
}

std::optional<PendrelSubject> decodePendrelSubject(std::string_view text) {
  if (text.size() != TextSize || text.back() != '2' || (text[27] != 'T' && text[27] != 'F'))
    return std::nullopt;
  const auto packed = unpacked(text.substr(31, 32));
  if (!packed) return std::nullopt;
  std::string guid;
  for (std::size_t i = 0; i < GuidSize; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", (*packed)[i]);
    guid += digits;
  }
  return PendrelSubject{trimmed(text.substr(0, 23)),
                        trimmed(text.substr(23, 3)),
                        text[26],
                        text[27] == 'T',
                        trimmed(text.substr(28, 3)),
                        guid,
                        word(*packed, 16),
                        static_cast<std::int16_t>(word(*packed, 18)),
                        word(*packed, 20),
                        word(*packed, 22)};
}

}  // namespace hy_wristlog::simulator
