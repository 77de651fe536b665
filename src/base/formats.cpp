#include "base/formats.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/ascii.h"
#include "base/dates.h"

namespace hy_wristlog {
namespace {

constexpr std::array<std::string_view, 7> DayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> MonthNames = {"January",   "February", "March",    "April",
                                                         "May",       "June",     "July",     "August",
                                                         "September", "October",  "November", "December"};
constexpr std::string_view LongTime = "h:nn:ss AMPM";

/// One step of a date pattern: a field letter (lower case, with the length of its run), a half-day mark, or
/// text that stands for itself.
struct DateToken {
  enum class Kind : std::uint8_t { Literal, Field, HalfDay } What;
  std::string_view Text;  ///< the literal, or the mark as it stands in the pattern
  char Letter = 0;
  std::size_t Length = 0;
};

std::size_t fieldLength(char letter, std::size_t run) {
  switch (letter) {
    case 'd':
    case 'm':
      return std::min<std::size_t>(run, 4);
    case 'h':
    case 'n':
    case 's':
      return std::min<std::size_t>(run, 2);
    case 'y':
      return run >= 4 ? 4 : std::min<std::size_t>(run, 2);
    case 't':
      return run >= 5 ? 5 : 0;
    case 'c':
      return 1;
    default:
      return 0;
  }
}

std::size_t halfDayLength(std::string_view pattern) {
  for (const std::string_view mark : {"AM/PM", "AMPM", "A/P"})
    if (pattern.size() >= mark.size() && equalsIgnoringCase(pattern.substr(0, mark.size()), mark))
      return mark.size();
  return 0;
}

std::vector<DateToken> dateTokens(std::string_view pattern) {
  using Kind = DateToken::Kind;
  std::vector<DateToken> tokens;
  const auto literal = [&](std::size_t from, std::size_t length) {
    tokens.push_back({Kind::Literal, pattern.substr(from, length)});
  };
  bool behindHours = false;
  for (std::size_t i = 0; i < pattern.size();) {
    if (pattern[i] == '\\') {
      literal(i + 1, 1);
      i += 2;
    } else if (pattern[i] == '"') {
      const std::size_t end = std::min(pattern.find('"', i + 1), pattern.size());
      literal(i + 1, end - i - 1);
      i = end + 1;
    } else if (const std::size_t mark = halfDayLength(pattern.substr(i))) {
      tokens.push_back({Kind::HalfDay, pattern.substr(i, mark)});
      i += mark;
    } else {
      char letter = asciiLower(pattern[i]);
      std::size_t run = 1;
      while (i + run < pattern.size() && asciiLower(pattern[i + run]) == letter) ++run;
      const std::size_t length = fieldLength(letter, run);
      if (length == 0) {
        literal(i, run);
        i += run;
        continue;
      }
      if (letter == 'm' && behindHours && length <= 2) letter = 'n';
      behindHours = letter == 'h';
      tokens.push_back({Kind::Field, {}, letter, length});
      i += length;
    }
  }
  return tokens;
}

std::string padded(std::int64_t value, std::size_t width) {
  std::string text = std::to_string(value);
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return text;
}

std::string dayOrMonth(std::int32_t number, std::string_view name, std::size_t length) {
  if (length <= 2) return padded(number, length);
  return std::string(length == 3 ? name.substr(0, 3) : name);
}

std::string generalDate(double date, const CivilTime& time) {
  const bool atMidnight = time.Hour == 0 && time.Minute == 0 && time.Second == 0;
  if (atMidnight) return formatDate(date, "m/d/yyyy");
  if (datePart(date) == 0.0) return formatDate(date, LongTime);
  return formatDate(date, "m/d/yyyy h:nn:ss AMPM");
}

std::string dateField(double date, const CivilTime& time, char letter, std::size_t length, bool halfDays) {
  switch (letter) {
    case 'd':
      return dayOrMonth(time.Day, DayNames[static_cast<std::size_t>(weekday(date))], length);
    case 'm':
      return dayOrMonth(time.Month, MonthNames[static_cast<std::size_t>(time.Month - 1)], length);
    case 'y':
      if (length == 1) return padded(secondsBetween(dateSerial(time.Year, 1, 1), date) / 86400 + 1, 1);
      return length == 2 ? padded(time.Year % 100, 2) : padded(time.Year, 4);
    case 'h':
      return padded(halfDays ? (time.Hour + 11) % 12 + 1 : time.Hour, length);
    case 'n':
      return padded(time.Minute, length);
    case 's':
      return padded(time.Second, length);
    case 't':
      return formatDate(date, LongTime);
    default:
      return generalDate(date, time);
  }
}

std::string halfDay(std::int32_t hour, std::string_view mark) {
  const bool lower = mark.front() == 'a' && mark.find('/') != std::string_view::npos;
  std::string text = hour < 12 ? "AM" : "PM";
  if (mark.size() == 3) text.pop_back();
  return lower ? asciiLower(text) : text;
}

/// Decimal digits d1 d2 d3 ... with the value 0.d1d2d3... times ten to the `Point`.
struct Decimal {
  bool Negative = false;
  std::string Digits;
  std::int64_t Point = 0;

  char at(std::int64_t index) const {
    return index >= 0 && index < static_cast<std::int64_t>(Digits.size())
               ? Digits[static_cast<std::size_t>(index)]
               : '0';
  }

  /// Keeps `places` digits behind the decimal point.
  void roundTo(std::int64_t places) {
    const std::int64_t keep = Point + places;
    if (keep >= static_cast<std::int64_t>(Digits.size())) return;
    const bool up = at(keep) >= '5';
    Digits.resize(static_cast<std::size_t>(std::max<std::int64_t>(keep, 0)));
    if (!up) return;
    std::int64_t i = keep - 1;
    for (; i >= 0 && at(i) == '9'; --i) Digits[static_cast<std::size_t>(i)] = '0';
    if (i >= 0) {
      ++Digits[static_cast<std::size_t>(i)];
    } else {
      Digits.insert(0, 1, '1');
      ++Point;
    }
  }

  bool isZero() const { return Digits.find_first_not_of('0') == std::string::npos; }
};

Decimal decimalOf(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), std::fabs(value),
                                 std::chars_format::scientific, 14)
                       .ptr;
  Decimal decimal;
  decimal.Negative = std::signbit(value);
  decimal.Digits = std::string(1, text[0]) + std::string(&text[2], 14);
  const char* exponent = &text[17];
  if (*exponent == '+') ++exponent;
  std::from_chars(exponent, end, decimal.Point);
  ++decimal.Point;
  if (decimal.isZero()) decimal.Point = 0;
  return decimal;
}

struct NumberPattern {
  std::string_view Prefix, Whole, Fraction, Suffix;
  bool Exponent = false;
  bool ExponentPlus = false;
  std::size_t ExponentDigits = 0;
};

std::string_view takeWhile(std::string_view& text, std::string_view characters) {
  const auto taken = text.substr(0, text.find_first_not_of(characters));
  text.remove_prefix(taken.size());
  return taken;
}

NumberPattern parseNumberPattern(std::string_view pattern) {
  NumberPattern parsed;
  const auto start = std::min(pattern.find_first_of("0#."), pattern.size());
  parsed.Prefix = pattern.substr(0, start);
  pattern.remove_prefix(start);
  parsed.Whole = takeWhile(pattern, "0#");
  if (pattern.starts_with('.')) {
    pattern.remove_prefix(1);
    parsed.Fraction = takeWhile(pattern, "0#");
  }
  if (pattern.starts_with("E+") || pattern.starts_with("E-")) {
    parsed.Exponent = true;
    parsed.ExponentPlus = pattern[1] == '+';
    pattern.remove_prefix(2);
    parsed.ExponentDigits = takeWhile(pattern, "0#").size();
  }
  parsed.Suffix = pattern;
  return parsed;
}

/// How many digits a run of placeholders shows at least: in front of the decimal point all from the first 0
/// on, behind it all up to the last.
std::size_t leastWholeDigits(std::string_view places) {
  const auto first = places.find('0');
  return first == std::string_view::npos ? 0 : places.size() - first;
}
std::size_t leastFractionDigits(std::string_view places) { return places.rfind('0') + 1; }

std::string wholeDigits(const Decimal& decimal, std::string_view places) {
  std::string text;
  for (std::int64_t i = 0; i < decimal.Point; ++i) text += decimal.at(i);
  text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
  const std::size_t least = leastWholeDigits(places);
  if (text.size() < least) text.insert(0, least - text.size(), '0');
  return text;
}

std::string fractionDigits(const Decimal& decimal, std::string_view places) {
  std::string text;
  for (std::size_t i = 0; i < places.size(); ++i)
    text += decimal.at(decimal.Point + static_cast<std::int64_t>(i));
  while (text.size() > leastFractionDigits(places) && text.back() == '0') text.pop_back();
  return text;
}

}  // namespace

std::string formatDate(double date, std::string_view pattern) {
  const CivilTime time = civilFromDate(date);
  const auto tokens = dateTokens(pattern);
  const bool halfDays = std::any_of(tokens.begin(), tokens.end(),
                                    [](const DateToken& t) { return t.What == DateToken::Kind::HalfDay; });
  std::string text;
  for (const DateToken& token : tokens) {
    switch (token.What) {
      case DateToken::Kind::Literal:
        text += token.Text;
        break;
      case DateToken::Kind::HalfDay:
        text += halfDay(time.Hour, token.Text);
        break;
      case DateToken::Kind::Field:
        text += dateField(date, time, token.Letter, token.Length, halfDays);
        break;
    }
  }
  return text;
}

std::string formatNumber(double value, std::string_view pattern) {
  if (!std::isfinite(value)) return textOf(value);
  const NumberPattern parsed = parseNumberPattern(pattern);
  Decimal decimal = decimalOf(value);
  const auto places = static_cast<std::int64_t>(parsed.Fraction.size());
  std::int64_t exponent = 0;
  if (parsed.Exponent && !decimal.isZero()) {
    const auto whole = std::max<std::int64_t>(static_cast<std::int64_t>(parsed.Whole.size()), 1);
    exponent = decimal.Point - whole;
    decimal.Point = whole;
    decimal.roundTo(places);
    exponent += decimal.Point - whole;
    decimal.Point = whole;
  } else {
    decimal.roundTo(places);
  }

  std::string text = decimal.Negative && !decimal.isZero() ? "-" : "";
  text += parsed.Prefix;
  text += wholeDigits(decimal, parsed.Whole);
  const std::string fraction = fractionDigits(decimal, parsed.Fraction);
  if (!fraction.empty()) text += '.' + fraction;
  if (parsed.Exponent) {
    text += exponent < 0 ? "E-" : parsed.ExponentPlus ? "E+" : "E";
    text += padded(std::abs(exponent), parsed.ExponentDigits);
  }
  text += parsed.Suffix;
  return text;
}

std::string textOf(double value) {
  if (value == 0.0) return "0";
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 15).ptr;
  return asciiUpper(std::string(text.data(), end));
}

}  // namespace hy_wristlog
