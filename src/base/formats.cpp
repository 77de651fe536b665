#include "base/formats.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "base/ascii.h"
#include "base/dates.h"

namespace hy_wristlog {
namespace {

constexpr auto DaySeconds = static_cast<std::int64_t>(SecondsPerDay);

constexpr std::array<std::string_view, 7> DayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> MonthNames = {"January",   "February", "March",    "April",
                                                         "May",       "June",     "July",     "August",
                                                         "September", "October",  "November", "December"};
constexpr std::string_view LongTime = "h:nn:ss AMPM";

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

std::string generalText(double value, int digits) {
  if (value == 0.0) return "0";
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, digits).ptr;
  return asciiUpper(std::string(text.data(), end));
}

/// The name of a day or a month, or its first three letters.
void appendName(std::string& text, std::string_view name, std::size_t length) {
  text += length == 3 ? name.substr(0, 3) : name;
}

std::string generalDate(double date, const CivilTime& time) {
  const bool atMidnight = time.Hour == 0 && time.Minute == 0 && time.Second == 0;
  if (atMidnight) return formatDate(date, "m/d/yyyy");
  if (datePart(date) == 0.0) return formatDate(date, LongTime);
  return formatDate(date, "m/d/yyyy h:nn:ss AMPM");
}

void appendDateField(std::string& text, double date, const CivilTime& time, char letter, std::size_t length,
                     bool halfDays) {
  switch (letter) {
    case 'd':
      if (length <= 2) return appendDigits(text, time.Day, length);
      return appendName(text, DayNames[static_cast<std::size_t>(weekday(date))], length);
    case 'm':
      if (length <= 2) return appendDigits(text, time.Month, length);
      return appendName(text, MonthNames[static_cast<std::size_t>(time.Month - 1)], length);
    case 'y':
      if (length == 1)
        return appendDigits(text, secondsBetween(dateSerial(time.Year, 1, 1), date) / DaySeconds + 1);
      return length == 2 ? appendDigits(text, time.Year % 100, 2) : appendDigits(text, time.Year, 4);
    case 'h':
      return appendDigits(text, halfDays ? (time.Hour + 11) % 12 + 1 : time.Hour, length);
    case 'n':
      return appendDigits(text, time.Minute, length);
    case 's':
      return appendDigits(text, time.Second, length);
    case 't':
      text += formatDate(date, LongTime);
      return;
    default:
      text += generalDate(date, time);
  }
}

void appendHalfDay(std::string& text, std::int32_t hour, std::string_view mark) {
  const bool lower = mark.front() == 'a' && mark.find('/') != std::string_view::npos;
  text += hour < 12 ? (lower ? 'a' : 'A') : (lower ? 'p' : 'P');
  if (mark.size() != 3) text += lower ? 'm' : 'M';
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

  /// Rounds to `places` digits after the decimal point.
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

std::string_view takeWhile(std::string_view& text, std::string_view characters) {
  const auto taken = text.substr(0, text.find_first_not_of(characters));
  text.remove_prefix(taken.size());
  return taken;
}

/// How many digits a run of placeholders shows at least: before the decimal point all from the first 0 on,
/// after it all up to the last 0.
std::size_t leastWholeDigits(std::string_view places) {
  const auto first = places.find('0');
  return first == std::string_view::npos ? 0 : places.size() - first;
}
std::size_t leastFractionDigits(std::string_view places) { return places.rfind('0') + 1; }

void appendWhole(std::string& text, const Decimal& decimal, std::size_t least) {
  std::int64_t first = 0;
  while (first < decimal.Point && decimal.at(first) == '0') ++first;
  const auto digits = static_cast<std::size_t>(std::max<std::int64_t>(decimal.Point - first, 0));
  if (digits < least) text.append(least - digits, '0');
  for (std::int64_t i = first; i < decimal.Point; ++i) text += decimal.at(i);
}

void appendFraction(std::string& text, const Decimal& decimal, std::size_t places, std::size_t least) {
  const std::size_t start = text.size();
  text += '.';
  for (std::size_t i = 0; i < places; ++i) text += decimal.at(decimal.Point + static_cast<std::int64_t>(i));
  while (text.size() > start + 1 + least && text.back() == '0') text.pop_back();
  if (text.size() == start + 1) text.pop_back();
}

}  // namespace

DateFormat::DateFormat(std::string_view pattern) {
  using Kind = Token::Kind;
  const auto literal = [&](std::size_t from, std::size_t length) {
    tokens_.push_back({Kind::Literal, std::string(pattern.substr(std::min(from, pattern.size()), length))});
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
      tokens_.push_back({Kind::HalfDay, std::string(pattern.substr(i, mark))});
      halfDays_ = true;
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
      tokens_.push_back({Kind::Field, {}, letter, length});
      i += length;
    }
  }
}

std::string DateFormat::operator()(double date) const {
  std::string text;
  append(text, date);
  return text;
}

void DateFormat::append(std::string& text, double date) const {
  append(text, date, civilFromDate(date), 0, tokens_.size());
}

void DateFormat::append(std::string& text, double date, const CivilTime& time, std::size_t from,
                        std::size_t to) const {
  for (; from < to; ++from) {
    const Token& token = tokens_[from];
    switch (token.What) {
      case Token::Kind::Literal:
        text += token.Text;
        break;
      case Token::Kind::HalfDay:
        appendHalfDay(text, time.Hour, token.Text);
        break;
      case Token::Kind::Field:
        appendDateField(text, date, time, token.Letter, token.Length, halfDays_);
        break;
    }
  }
}

bool DateFormat::Token::variesWithinHour() const {
  return What == Kind::Field && std::string_view("nstc").find(Letter) != std::string_view::npos;
}

DateSequence::DateSequence(std::string_view pattern) : format_(pattern), to_(format_.tokens_.size()) {
  const auto& tokens = format_.tokens_;
  while (from_ < to_ && !tokens[from_].variesWithinHour()) ++from_;
  while (to_ > from_ && !tokens[to_ - 1].variesWithinHour()) --to_;
}

void DateSequence::append(std::string& text, double date) {
  constexpr std::int64_t HourSeconds = 3600;
  const std::int64_t second = secondsBetween(0, date), hour = second / HourSeconds;
  if (hour != hour_ || second < 0) {
    time_ = civilFromDate(date);
    hour_ = hour;
    head_.clear();
    tail_.clear();
    format_.append(head_, date, time_, 0, from_);
    format_.append(tail_, date, time_, to_, format_.tokens_.size());
  } else {
    time_.Minute = static_cast<std::int32_t>(second / 60 % 60);
    time_.Second = static_cast<std::int32_t>(second % 60);
  }
  text += head_;
  format_.append(text, date, time_, from_, to_);
  text += tail_;
}

std::string formatDate(double date, std::string_view pattern) { return DateFormat(pattern)(date); }

NumberFormat::NumberFormat(std::string_view pattern) {
  const auto start = std::min(pattern.find_first_of("0#."), pattern.size());
  prefix_ = pattern.substr(0, start);
  pattern.remove_prefix(start);
  const auto whole = takeWhile(pattern, "0#");
  wholePlaces_ = whole.size();
  leastWhole_ = leastWholeDigits(whole);
  if (pattern.starts_with('.')) {
    pattern.remove_prefix(1);
    const auto fraction = takeWhile(pattern, "0#");
    fractionPlaces_ = fraction.size();
    leastFraction_ = leastFractionDigits(fraction);
  }
  if (pattern.starts_with("E+") || pattern.starts_with("E-")) {
    exponent_ = true;
    exponentPlus_ = pattern[1] == '+';
    pattern.remove_prefix(2);
    exponentDigits_ = takeWhile(pattern, "0#").size();
  }
  suffix_ = pattern;
}

std::string NumberFormat::operator()(double value) const {
  std::string text;
  append(text, value);
  return text;
}

void NumberFormat::append(std::string& text, double value) const {
  if (!std::isfinite(value)) {
    text += textOf(value);
    return;
  }
  Decimal decimal = decimalOf(value);
  const auto places = static_cast<std::int64_t>(fractionPlaces_);
  std::int64_t exponent = 0;
  if (exponent_ && !decimal.isZero()) {
    const auto whole = std::max<std::int64_t>(static_cast<std::int64_t>(wholePlaces_), 1);
    exponent = decimal.Point - whole;
    decimal.Point = whole;
    decimal.roundTo(places);
    exponent += decimal.Point - whole;
    decimal.Point = whole;
  } else {
    decimal.roundTo(places);
  }

  if (decimal.Negative && !decimal.isZero()) text += '-';
  text += prefix_;
  appendWhole(text, decimal, leastWhole_);
  appendFraction(text, decimal, fractionPlaces_, leastFraction_);
  if (exponent_) {
    text += exponent < 0 ? "E-" : exponentPlus_ ? "E+" : "E";
    appendDigits(text, std::abs(exponent), exponentDigits_);
  }
  text += suffix_;
}

std::string formatNumber(double value, std::string_view pattern) { return NumberFormat(pattern)(value); }

std::string upperHex(std::uint64_t value, std::size_t digits) {
  std::array<char, 16> hex{};
  char* const end = std::to_chars(hex.data(), hex.data() + hex.size(), value, 16).ptr;
  const std::string text = asciiUpper(std::string(hex.data(), end));
  return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

void appendDigits(std::string& text, std::int64_t value, std::size_t least) {
  if (value >= 0 && value < 100 && least <= 2) {
    if (value >= 10 || least == 2) text += static_cast<char>('0' + value / 10);
    text += static_cast<char>('0' + value % 10);
    return;
  }
  std::array<char, 20> digits;
  const auto length = static_cast<std::size_t>(
      std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr - digits.data());
  if (length < least) text.append(least - length, '0');
  text.append(digits.data(), length);
}

std::string textOf(double value) { return generalText(value, 15); }
std::string textOfSingle(float value) { return generalText(value, 7); }

}  // namespace hy_wristlog
