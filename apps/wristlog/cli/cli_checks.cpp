#include "cli/cli_checks.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "engineering/dates.h"
#include "engineering/recording.h"
#include "hy_wristlog/failure.h"

namespace wristlog {

namespace engineering = hy_wristlog::engineering;

namespace {

std::optional<double> numberOf(const std::string& text) {
  double value = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  return error == std::errc{} && end == last ? std::optional(value) : std::nullopt;
}

/// Checks for a number from 0 to `most`; "nan" is outside too.
std::string validNumber(const std::string& text, double most, const char* words) {
  const auto value = numberOf(text);
  return value && *value >= 0 && *value <= most ? std::string()
                                                : "\"" + text + "\" is no number from 0 to " + words;
}

/// The same for what a logger keeps to one decimal.
std::string validTenths(const std::string& text, double most, const char* words) {
  constexpr double Noise = 1e-6;
  std::string problem = validNumber(text, most, words);
  if (!problem.empty()) return problem;
  const double tenths = *numberOf(text) * 10;
  if (std::abs(tenths - std::round(tenths)) < Noise) return {};
  return "\"" + text + "\" has more than one decimal, and the logger keeps one: choose a smaller unit";
}

std::string validDay(const std::string& text, const char* first, const char* last) {
  constexpr std::size_t DayLength = 10;
  std::string problem = validDate(text);
  if (!problem.empty()) return problem;
  if (text.size() != DayLength) return "\"" + text + "\" is no day: write yyyy-mm-dd";
  if (text < first || text > last)
    return "\"" + text + "\" is outside what the logger can keep, " + first + " to " + last;
  return {};
}

}  // namespace

std::string validDate(const std::string& text) {
  try {
    engineering::dateFromText(text);
    return {};
  } catch (const hy_wristlog::Failure& failure) {
    return failure.Description;
  }
}

/// Loggers count seconds from 1970 in 32 bits; a moment outside would silently become "none".
std::string validLoggerTime(const std::string& text) {
  std::string problem = validDate(text);
  if (!problem.empty()) return problem;
  const double date = engineering::dateFromText(text);
  if (date < engineering::dateFromText("1970-01-02") || date > engineering::dateFromText("2038-01-18"))
    return "\"" + text + "\" is outside the logger's calendar, 1970-01-02 to 2038-01-18";
  return {};
}

std::string validPendrelDay(const std::string& text) { return validDay(text, "1930-01-01", "2029-12-31"); }
std::string validPendrelBirthDate(const std::string& text) {
  return validDay(text, "1899-12-30", "2079-06-05");
}

std::string validGuid(const std::string& text) {
  constexpr std::size_t Digits = 32;
  if (text.size() == Digits && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos)
    return {};
  return "\"" + text + "\" is not 32 hexadecimal digits";
}

std::string validGender(const std::string& text) {
  const bool isLetter =
      text.size() == 1 && ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
  return isLetter ? "" : "\"" + text + "\" is not one letter from A to Z";
}

std::string validPendrelSize(const std::string& text) { return validTenths(text, 6553.5, "6553.5"); }
std::string validSize(const std::string& text) { return validTenths(text, 9999.9, "9999.9"); }
std::string validSpeed(const std::string& text) { return validNumber(text, 1000, "1000"); }

std::string validServingSpeed(const std::string& text) {
  constexpr double Fastest = 3600;
  const auto value = numberOf(text);
  return value && *value >= 1 && *value <= Fastest ? "" : "\"" + text + "\" is no number from 1 to 3600";
}

std::chrono::minutes wornFor(const std::string& text) {
  constexpr std::chrono::days Longest{400};
  std::int32_t count = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, count);
  const std::string unit(error == std::errc{} ? end : last, last);
  const std::chrono::minutes of = unit == "d"                   ? std::chrono::days(1)
                                  : unit == "h"                 ? std::chrono::hours(1)
                                  : unit == "m"                 ? std::chrono::minutes(1)
                                  : unit.empty() && text == "0" ? std::chrono::minutes(1)
                                                                : std::chrono::minutes(0);
  if (of == std::chrono::minutes(0) || count < 0 || count > Longest / of)
    throw std::invalid_argument("\"" + text + "\" is no time such as 7d, 36h or 90m, up to 400d");
  return count * of;
}

std::string validFile(const std::string& text) {
  return text.empty() || text.back() == '/' || text == "-" ? "\"" + text + "\" names no file" : "";
}

std::string validName(const std::string& text) { return text.empty() ? "the name is empty" : ""; }

std::string validFolder(const std::string& text) { return text.empty() ? "the folder has no name" : ""; }

std::string validOutputFolder(const std::string& text) {
  return text == "-"
             ? "files in a folder cannot go to standard output; 'decode --out -' writes the series there"
             : validFolder(text);
}
std::string notEmpty(const std::string& text) { return text.empty() ? "nothing is given" : ""; }

ArgumentCheck storableIn(std::size_t length) {
  return [length](const std::string& text) -> std::string {
    if (engineering::isStorable(text, length)) return {};
    return "\"" + text + "\" does not fit: at most " + std::to_string(length) +
           " characters of the Western European set";
  };
}

}  // namespace wristlog
