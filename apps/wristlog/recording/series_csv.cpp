#include "recording/series_csv.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "base/dates.h"
#include "base/formats.h"
#include "base/text_memo.h"
#include "engineering/recording.h"
#include "engineering/zones.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

/// The file gets its text in pieces of about this size.
constexpr std::size_t Piece = 65536;
constexpr auto DaySeconds = static_cast<std::int64_t>(hw::SecondsPerDay);

void appendTwo(std::string& text, std::int64_t value) { hw::appendDigits(text, value, 2); }

/// Light is written with as few digits as tell it from every other single.
void appendLight(std::string& text, float value) {
  char digits[32];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// The cells of a column.
template <class Element>
struct Cells;

template <>
struct Cells<std::int32_t> {
  void append(std::string& text, std::int32_t value) {
    if (value >= 0) hw::appendDigits(text, value);
  }
};
template <>
struct Cells<hw::Tristate> {
  void append(std::string& text, hw::Tristate value) {
    if (value != hw::Tristate::Empty) text += value == hw::Tristate::True ? '1' : '0';
  }
};
template <>
struct Cells<float> {
  hw::TextMemo Memo;
  void append(std::string& text, float value) {
    if (std::isfinite(value) && value >= 0) Memo.append(text, value, appendLight);
  }
};

std::string offsetText(std::int32_t minutes) {
  std::string text(1, minutes < 0 ? '-' : '+');
  appendTwo(text, std::abs(minutes) / 60);
  text += ':';
  appendTwo(text, std::abs(minutes) % 60);
  return text;
}

/// Seconds since the day count's day 0.
std::int64_t secondsOf(double date) { return std::llround(date * hw::SecondsPerDay); }

/// Writes times that come in their order; each day is written once.
class Times {
 public:
  void append(std::string& text, std::int64_t seconds) {
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

 private:
  void newDay(std::int64_t day) {
    using namespace std::chrono;
    const year_month_day date{sys_days(days(day - static_cast<int>(hw::UnixEpochDate)))};
    day_ = day;
    date_.clear();
    hw::appendDigits(date_, static_cast<int>(date.year()));
    date_ += '-';
    appendTwo(date_, static_cast<unsigned>(date.month()));
    date_ += '-';
    appendTwo(date_, static_cast<unsigned>(date.day()));
    date_ += 'T';
  }

  std::int64_t day_ = 0;
  std::string date_;
};

/// Appends one column's cell of a row.
using Column = std::function<void(std::string& text, std::size_t row)>;

class Columns {
 public:
  template <class Series>
  void add(const char* name, const Series& series) {
    if (series.empty()) return;
    heading_ += std::string(",") + name;
    columns_.push_back(
        [&series, cells = Cells<typename Series::value_type>()](std::string& text, std::size_t row) mutable {
          text += ',';
          if (row < series.size()) cells.append(text, series[row]);
        });
  }

  const std::string& heading() const { return heading_; }
  void appendRow(std::string& text, std::size_t row) const {
    for (const Column& column : columns_) column(text, row);
  }

 private:
  std::string heading_ = "local_time,utc";
  std::vector<Column> columns_;
};

/// The heading and a row for each of the logger's samples, the first of them at `startDate` (UTC).
template <class Logger>
void addRows(platform::NewFile& file, const Columns& columns, const Logger& logger, double startDate) {
  file.add(columns.heading() + "\n");
  const auto samples = static_cast<std::size_t>(std::max(0, logger.Get_Samples()));
  if (samples == 0) return;

  const std::int64_t start = secondsOf(startDate);
  const auto timeOf = [&](std::size_t row) {
    return start + static_cast<std::int64_t>(row) * logger.Get_EpochLength();
  };
  const auto periods =
      engineering::offsetPeriods(logger, startDate, static_cast<double>(timeOf(samples)) / hw::SecondsPerDay);
  auto next = periods.begin();
  std::int32_t offset = 0;
  Times localTimes, utcTimes;
  std::string suffix, text;
  for (std::size_t row = 0; row < samples; ++row) {
    const std::int64_t utc = timeOf(row);
    for (; next != periods.end() && secondsOf(next->FromUtc) <= utc; ++next) {
      offset = next->Minutes;
      suffix = offsetText(offset);
    }
    localTimes.append(text, utc + std::int64_t{offset} * 60);
    text += suffix;
    text += ',';
    utcTimes.append(text, utc);
    text += 'Z';
    columns.appendRow(text, row);
    text += '\n';
    if (text.size() < Piece) continue;
    file.add(text);
    text.clear();
  }
  file.add(text);
}

}  // namespace

void addSeriesCsv(platform::NewFile& file, const hw::Class_VardenLogger& logger) {
  Columns columns;
  columns.add("activity", logger.Get_ActivityArray());
  columns.add("light_lux", logger.Get_LightArray());
  columns.add("red_uw_cm2", logger.Get_RedLightArray());
  columns.add("green_uw_cm2", logger.Get_GreenLightArray());
  columns.add("blue_uw_cm2", logger.Get_BlueLightArray());
  columns.add("marker", logger.Get_MarkerArray());
  columns.add("marker2", logger.Get_Marker2Array());
  columns.add("off_wrist", logger.Get_WristStatusArray());
  addRows(file, columns, logger, logger.Get_StartTimeGMT());
}

void addSeriesCsv(platform::NewFile& file, const hw::Class_Pendrel& logger) {
  Columns columns;
  columns.add("activity", logger.Get_ActivityArray());
  if (logger.Get_AcquisitionMode() == hw::PD_Mode_ActivityAndSteps)
    columns.add("steps", logger.Get_StepsArray());
  columns.add("marker", logger.Get_MarkerArray());
  addRows(file, columns, logger, engineering::startUtc(logger));
}

}  // namespace wristlog
