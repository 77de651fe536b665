#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/dates.h"

/// Dates and numbers as text, by pattern.
namespace hy_wristlog {

/// A date by a pattern. Letters in any case: d dd ddd dddd, m mm mmm mmmm (minutes directly after hours), n
/// nn, y (day of the year) yy yyyy, h hh (12-hour with AMPM in the pattern, else 24-hour), s ss, and AMPM,
/// AM/PM, A/P, ttttt; c the general form; "\" and "" quote; other characters stand for themselves. Names are
/// English. ".000" after seconds gives milliseconds as 000, since dates carry whole seconds. Raises
/// InvalidCall outside the years 100 to 9999.
std::string formatDate(double date, std::string_view pattern);

/// A number by a pattern of 0, #, a decimal point and E+00; rounded half away from zero on 15 significant
/// digits. The decimal point is "." whatever the locale.
std::string formatNumber(double value, std::string_view pattern);

/// Upper-case hexadecimal digits, at least `digits` of them, filled with leading zeros.
std::string upperHex(std::uint64_t value, std::size_t digits);

/// Decimal digits, at least `least` of them, filled with leading zeros.
void appendDigits(std::string& text, std::int64_t value, std::size_t least = 1);

/// A pattern of `formatDate`, parsed once for many dates.
class DateFormat {
 public:
  explicit DateFormat(std::string_view pattern);
  std::string operator()(double date) const;
  void append(std::string& text, double date) const;

 private:
  friend class DateSequence;

  /// A field letter (lower case, with the length of its run), a half-day mark, or text that stands for
  /// itself.
  struct Token {
    enum class Kind : unsigned char { Literal, Field, HalfDay } What;
    std::string Text;  ///< the literal, or the mark as it stands in the pattern
    char Letter = 0;
    std::size_t Length = 0;

    bool variesWithinHour() const;
  };
  void append(std::string& text, double date, const CivilTime& time, std::size_t from, std::size_t to) const;

  std::vector<Token> tokens_;
  bool halfDays_ = false;
};

/// A pattern for dates that come in their order: what stays the same within an hour is made once.
class DateSequence {
 public:
  explicit DateSequence(std::string_view pattern);
  /// Appends what DateFormat gives.
  void append(std::string& text, double date);

 private:
  DateFormat format_;
  std::size_t from_ = 0, to_ = 0;  ///< the tokens that vary within an hour
  std::int64_t hour_ = std::numeric_limits<std::int64_t>::min();
  CivilTime time_;
  std::string head_, tail_;
};

/// A pattern of `formatNumber`, parsed once for many numbers.
class NumberFormat {
 public:
  explicit NumberFormat(std::string_view pattern);
  std::string operator()(double value) const;
  void append(std::string& text, double value) const;

 private:
  std::string prefix_, suffix_;
  std::size_t wholePlaces_ = 0, leastWhole_ = 0;        ///< digits before the decimal point
  std::size_t fractionPlaces_ = 0, leastFraction_ = 0;  ///< digits after it
  bool exponent_ = false, exponentPlus_ = false;
  std::size_t exponentDigits_ = 0;
};

/// The shortest text of a number as it is joined to other text ("0.5", "-1", "1E+20"), 15 significant digits.
std::string textOf(double value);
/// The same for a single, with 7 significant digits.
std::string textOfSingle(float value);

}  // namespace hy_wristlog
