#include "base/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "base/ascii.h"
#include "base/faults.h"

namespace hy_wristlog {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

template <class To>
To roundTo(double value) {
  double rounded = std::floor(value);
  const double rest = value - rounded;
  if (rest > 0.5 || (rest == 0.5 && std::fmod(rounded, 2.0) != 0.0)) rounded += 1.0;
  // The bounds are doubles: 2^63 - 1 is none, but 2^63, which is -Lowest, is one.
  constexpr double Lowest = static_cast<double>(std::numeric_limits<To>::min());
  if (!(rounded >= Lowest && rounded < -Lowest)) fault::raise(fault::Overflow);
  return static_cast<To>(rounded);
}

/// The value of a plain decimal number; none when it is too great, 0 when it is too small.
std::optional<double> parseDecimal(const std::string& text) {
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc{}) return value;
  const auto exponent = text.find('e');
  const bool small = exponent != std::string::npos ? text.compare(exponent, 2, "e-") == 0
                                                   : text.find_first_not_of("-0") == text.find('.');
  if (small) return 0.0;
  return std::nullopt;
}

/// Reads a number from the front of a text, for the strict and the lenient function alike.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }
  bool has(char c) const { return !rest_.empty() && asciiUpper(rest_.front()) == c; }
  bool hasSign() const { return has('+') || has('-'); }
  bool hasDigit() const { return !rest_.empty() && isDigit(rest_.front()); }
  char take() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }
  void skipBlanks() {
    while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
  }

  /// Appends digits to `number`; separators among them are skipped when allowed.
  std::size_t takeDigits(std::string& number, bool separators) {
    std::size_t count = 0;
    for (; hasDigit() || (separators && count > 0 && has(',')); ++count) {
      const char c = take();
      if (c != ',') number += c;
    }
    return count;
  }

  /// Appends an exponent to `number`; takes nothing when no digits follow.
  void takeExponent(std::string& number) {
    if (!has('E') && !has('D')) return;
    const std::string_view before = rest_;
    take();
    std::string exponent = "e";
    if (hasSign()) exponent += take();
    if (takeDigits(exponent, false) > 0)
      number += exponent;
    else
      rest_ = before;
  }

 private:
  std::string_view rest_;
};

std::optional<std::uint32_t> parseWhole(std::string_view digits, int base) {
  std::uint32_t value = 0;
  const auto end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, base);
  if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
  return value;
}

std::optional<double> parsePrefixed(std::string_view text) {
  if (text.size() < 3 || text.front() != '&') return std::nullopt;
  const char kind = asciiUpper(text[1]);
  if (kind != 'H' && kind != 'O') return std::nullopt;
  const auto value = parseWhole(text.substr(2), kind == 'H' ? 16 : 8);
  return value ? std::optional<double>(static_cast<std::int32_t>(*value)) : std::nullopt;
}

}  // namespace

std::int16_t roundToInt16(double value) { return roundTo<std::int16_t>(value); }
std::int32_t roundToInt32(double value) { return roundTo<std::int32_t>(value); }
std::int64_t roundToInt64(double value) { return roundTo<std::int64_t>(value); }

std::optional<double> parseNumber(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  if (const auto value = parsePrefixed(text)) return value;

  Scanner scanner(text);
  std::string number;
  const bool signInFront = scanner.hasSign();
  bool negative = signInFront && scanner.take() == '-';
  scanner.skipBlanks();
  std::size_t digits = scanner.takeDigits(number, true);
  if (scanner.has('.')) {
    number += scanner.take();
    digits += scanner.takeDigits(number, false);
  }
  if (digits == 0) return std::nullopt;
  scanner.takeExponent(number);
  scanner.skipBlanks();
  if (!signInFront && scanner.hasSign()) negative = scanner.take() == '-';
  if (!scanner.atEnd()) return std::nullopt;
  const auto value = parseDecimal(number);
  return value && negative ? -*value : value;
}

bool isNumeric(std::string_view text) { return parseNumber(text).has_value(); }

std::optional<double> parseUngroupedNumber(std::string_view text) {
  return text.find(',') == std::string_view::npos ? parseNumber(text) : std::nullopt;
}

double leadingNumber(std::string_view text) {
  std::string dense;
  std::copy_if(text.begin(), text.end(), std::back_inserter(dense), [](char c) { return !isBlank(c); });

  Scanner scanner(dense);
  std::string number;
  if (scanner.hasSign() && scanner.take() == '-') number = "-";
  std::size_t digits = scanner.takeDigits(number, false);
  if (scanner.has('.')) {
    number += scanner.take();
    digits += scanner.takeDigits(number, false);
  }
  if (digits == 0) return 0;
  scanner.takeExponent(number);
  if (const auto value = parseDecimal(number)) return *value;
  fault::raise(fault::Overflow);
}

std::optional<std::uint32_t> parseHexadecimal(std::string_view text) { return parseWhole(text, 16); }

bool isDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

}  // namespace hy_wristlog
