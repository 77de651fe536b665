#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

/// Text to numbers, and real to whole numbers.
namespace hy_wristlog {

/// Rounds to the nearest whole number, exact halves to even. Raises Overflow when the result does not fit,
/// and for NaN.
std::int16_t roundToInt16(double value);
std::int32_t roundToInt32(double value);
std::int64_t roundToInt64(double value);

/// The number that the whole text stands for; none when it is not numeric. Accepted are blanks around it, a
/// sign before or after it, one decimal point, thousands separators before it, an exponent with E or D; or
/// "&H" or "&O" and up to 32 bits, in two's complement.
std::optional<double> parseNumber(std::string_view text);
bool isNumeric(std::string_view text);
/// The same without thousands separators: in a file that people edit, a comma may be meant as a decimal one.
std::optional<double> parseUngroupedNumber(std::string_view text);

/// The decimal number at the start of the text; 0 when there is none. Blanks are skipped, even among the
/// digits. Raises Overflow when it is too great.
double leadingNumber(std::string_view text);

/// The value of up to 32 bits in hexadecimal digits; none when there are none, or other characters among
/// them.
std::optional<std::uint32_t> parseHexadecimal(std::string_view text);

/// True when the text is one or more of 0 to 9 and nothing else.
bool isDigits(std::string_view text);

inline bool isOneOf(std::int32_t number, std::initializer_list<std::int32_t> numbers) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace hy_wristlog
