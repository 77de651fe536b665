#include "recording/csv_parts.h"

#include <chrono>
#include <cmath>
#include <cstdlib>

#include "base/dates.h"
#include "base/formats.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

constexpr auto DaySeconds = static_cast<std::int64_t>(hw::SecondsPerDay);

void appendTwo(std::string& text, std::int64_t value) {
  text += static_cast<char>('0' + value / 10);
  text += static_cast<char>('0' + value % 10);
}

}  // namespace

std::string csvCell(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string cell = "\"";
  for (const char c : text) cell.append(c == '"' ? 2 : 1, c);
  return cell + '"';
}

std::string offsetText(std::int32_t minutes) {
  std::string text(1, minutes < 0 ? '-' : '+');
  appendTwo(text, std::abs(minutes) / 60);
  text += ':';
  appendTwo(text, std::abs(minutes) % 60);
  return text;
}

std::int64_t secondsOf(double date) { return std::llround(date * hw::SecondsPerDay); }

void Times::append(std::string& text, std::int64_t seconds) {
  const std::int64_t day = seconds / DaySeconds - (seconds % DaySeconds < 0 ? 1 : 0);
  if (day != day_ || date_.empty()) newDay(day);
  const std::int64_t second = seconds - day * DaySeconds;
  text += date_;
  appendTwo(text, second / 3600);
  text += ':';
  appendTwo(text, second / 60 % 60);
  text += ':';
  appendTwo(text, second % 60);
}

void Times::newDay(std::int64_t day) {
  using namespace std::chrono;
  const year_month_day date{sys_days(days(day - static_cast<int>(hw::UnixEpochDate)))};
  constexpr std::size_t YearDigits = 4;
  day_ = day;
  date_ = before_;
  hw::appendDigits(date_, static_cast<int>(date.year()), YearDigits);
  date_ += '-';
  appendTwo(date_, static_cast<unsigned>(date.month()));
  date_ += '-';
  appendTwo(date_, static_cast<unsigned>(date.day()));
  date_ += 'T';
}

}  // namespace wristlog
