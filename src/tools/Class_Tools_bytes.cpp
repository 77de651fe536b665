#include <array>
#include <charconv>
#include <system_error>

#include "base/ascii.h"
#include "base/numbers.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/guarded.h"

namespace hy_wristlog {
namespace {

constexpr std::string_view HexDigits = "0123456789ABCDEF";

constexpr std::array<std::uint32_t, 256> crcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t n = 0; n < table.size(); ++n) {
    std::uint32_t crc = n << 8U;
    for (int shift = 0; shift < 8; ++shift) crc = (crc << 1U) ^ ((crc & 0x8000U) != 0 ? 0x1021U : 0U);
    table[n] = crc & 0xFFFFU;
  }
  return table;
}

constexpr auto CrcTable = crcTable();

void appendHex(std::string& text, std::uint8_t byte) {
  text += HexDigits[byte >> 4U];
  text += HexDigits[byte & 15U];
}

void appendNumber(std::string& text, double value) {
  const std::int32_t whole = roundToInt32(value);
  if (whole >= 0 && whole <= 255) appendHex(text, static_cast<std::uint8_t>(whole));
}

void appendElement(std::string& text, const NumberOrText& element) {
  if (const auto* number = std::get_if<double>(&element)) {
    appendNumber(text, *number);
    return;
  }
  const auto& own = std::get<std::string>(element);
  if (const auto number = parseNumber(own))
    appendNumber(text, *number);
  else
    text += own;
}

/// The text of elements 0 to the upper bound, whatever the lower bound is.
template <class T, class Append>
std::string hexOfArray(const GrowingArray<T>& array, Append append) {
  if (!array.isArray()) return {};
  return guarded("fncConvertByteArrayToHexString", [&] {
    std::string text;
    const std::int32_t last = array.UBound();
    for (std::int32_t i = 0; i <= last; ++i) append(text, array[i]);
    return text;
  });
}

}  // namespace

std::int32_t Class_Tools::fncGetCRC16(std::span<const std::uint8_t> bytes) {
  if (bytes.data() == nullptr) {
    guarded("fncGetCRC16", [] { fault::raise(fault::Subscript); });
    return 0;
  }
  std::uint32_t crc = 0;
  for (const std::uint8_t byte : bytes) crc = CrcTable[(crc >> 8U) ^ byte] ^ (crc & 0xFFU) << 8U;
  return static_cast<std::int32_t>(crc);
}

std::string Class_Tools::fncConvertByteToHexString(std::uint8_t byte) {
  std::string text;
  appendHex(text, byte);
  return text;
}

std::string Class_Tools::fncConvertByteArrayToHexString(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) appendHex(text, byte);
  return text;
}

std::string Class_Tools::fncConvertByteArrayToHexString(const GrowingArray<std::uint8_t>& bytes) {
  return hexOfArray(bytes, appendHex);
}

std::string Class_Tools::fncConvertByteArrayToHexString(const GrowingArray<NumberOrText>& elements) {
  return hexOfArray(elements, appendElement);
}

GrowingArray<std::uint8_t> Class_Tools::fncConvertHexStringToByteArray(std::string_view text) {
  GrowingArray<std::uint8_t> invalid;
  invalid.redim(-1, -1);
  if (text.size() % 2 != 0) return invalid;
  return guarded("fncConvertHexStringToByteArray", [&] {
    GrowingArray<std::uint8_t> bytes;
    bytes.redim(0, fault::narrow<std::int32_t>(text.size() / 2) - 1);
    std::size_t position = 0;
    for (std::uint8_t& byte : bytes) {
      const auto high = HexDigits.find(asciiUpper(text[position]));
      const auto low = HexDigits.find(asciiUpper(text[position + 1]));
      if (high == std::string_view::npos || low == std::string_view::npos) return invalid;
      byte = static_cast<std::uint8_t>(high * 16 + low);
      position += 2;
    }
    return bytes;
  });
}

std::int32_t Class_Tools::fncConvertHexStringToLong(std::string& text) {
  text = asciiUpper(std::move(text));
  if (text.find_first_not_of(HexDigits) != std::string::npos) return 0;
  std::uint32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (result.ec == std::errc::result_out_of_range)
    return guarded("fncConvertHexStringToLong", []() -> std::int32_t { fault::raise(fault::Overflow); });
  return static_cast<std::int32_t>(value);
}

std::int16_t Class_Tools::fncConvertSignedCharToInt(std::uint8_t byte) {
  return static_cast<std::int8_t>(byte);
}

std::uint8_t Class_Tools::fncConvertIntToSignedChar(std::int16_t value) {
  if (value >= -128 && value <= 127) return static_cast<std::uint8_t>(value);
  return guarded("fncConvertIntToSignedChar", []() -> std::uint8_t {
    throw Failure(FailureNumber::NoSignedChar, "Class_Tools.fncConvertIntToSignedChar",
                  "Input value out of bounds");
  });
}

std::string Class_Tools::fncGetErrorStringFromDLLerrorNum(std::int32_t number) {
  return platform::current().environment().errorText(number);
}

}  // namespace hy_wristlog
