#include "recording/series_csv.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "base/dates.h"
#include "engineering/recording.h"
#include "engineering/zones.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

template <class Number>
void append(std::string& text, Number value) {
  char digits[32];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void appendTwo(std::string& text, std::int64_t value) {
  if (value < 10) text += '0';
  append(text, value);
}

void appendCell(std::string& text, std::int32_t value) {
  if (value >= 0) append(text, value);
}
void appendCell(std::string& text, hw::Tristate value) {
  if (value != hw::Tristate::Empty) text += value == hw::Tristate::True ? '1' : '0';
}
void appendCell(std::string& text, float value) {
  if (std::isfinite(value) && value >= 0) append(text, value);
}

std::string offsetText(std::int32_t minutes) {
  std::string text(1, minutes < 0 ? '-' : '+');
  appendTwo(text, std::abs(minutes) / 60);
  text += ':';
  appendTwo(text, std::abs(minutes) % 60);
  return text;
}

/// Seconds since the day count's day 0.
std::int64_t secondsOf(double date) { return std::llround(date * hw::SecondsPerDay); }

void appendTime(std::string& text, std::int64_t seconds) {
  using namespace std::chrono;
  const auto days = floor<std::chrono::days>(std::chrono::seconds(seconds));
  const year_month_day date{sys_days(days) - std::chrono::days(static_cast<int>(hw::UnixEpochDate))};
  const std::int64_t second = (std::chrono::seconds(seconds) - days).count();
  append(text, static_cast<int>(date.year()));
  text += '-';
  appendTwo(text, static_cast<unsigned>(date.month()));
  text += '-';
  appendTwo(text, static_cast<unsigned>(date.day()));
  text += 'T';
  appendTwo(text, second / 3600);
  text += ':';
  appendTwo(text, second / 60 % 60);
  text += ':';
  appendTwo(text, second % 60);
}

/// Appends one column's cell of a row.
using Column = std::function<void(std::string& text, std::size_t row)>;

class Columns {
 public:
  template <class Series>
  void add(const char* name, const Series& series) {
    if (series.empty()) return;
    heading_ += std::string(",") + name;
    columns_.push_back([&series](std::string& text, std::size_t row) {
      text += ',';
      if (row < series.size()) appendCell(text, series[row]);
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
  std::string suffix, text;
  for (std::size_t row = 0; row < samples; ++row) {
    const std::int64_t utc = timeOf(row);
    for (; next != periods.end() && secondsOf(next->FromUtc) <= utc; ++next) {
      offset = next->Minutes;
      suffix = offsetText(offset);
    }
    appendTime(text, utc + std::int64_t{offset} * 60);
    text += suffix;
    text += ',';
    appendTime(text, utc);
    text += 'Z';
    columns.appendRow(text, row);
    text += '\n';
    file.add(text);
    text.clear();
  }
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
  columns.add("marker2", engineering::marker2(logger));
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
