#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// What the tables of a recording have in common.
namespace wristlog {

/// A cell as RFC 4180 has it: in quotes when it holds a comma, a quote or a line end.
std::string csvCell(std::string_view text);

/// The columns that every table begins with, a comma after each: the logger and who wears it.
template <class Logger>
std::string whoseCells(const Logger& logger) {
  return csvCell(logger.Get_SerialNumber()) + "," + csvCell(logger.Get_SubjectIdentity()) + ",";
}

/// An offset from UTC: "-05:00".
std::string offsetText(std::int32_t minutes);

/// Seconds since the day count's day 0.
std::int64_t secondsOf(double date);

/// Writes moments as "2026-03-02T09:01:00". Of moments that come in their order each day is written once.
class Times {
 public:
  /// `before` stands in front of each.
  explicit Times(std::string before = {}) : before_(std::move(before)) {}
  void append(std::string& text, std::int64_t seconds);

 private:
  void newDay(std::int64_t day);

  std::string before_, date_;
  std::int64_t day_ = 0;
};

}  // namespace wristlog
