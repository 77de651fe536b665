#include "recording/series_csv.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

#include "base/dates.h"
#include "base/formats.h"
#include "base/text_memo.h"
#include "engineering/zones.h"
#include "recording/codebook.h"
#include "recording/csv_parts.h"
#include "varden/logging_modes.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// The file gets its text in pieces of about this size.
constexpr std::size_t Piece = 65536;

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

/// Writes the rows after their logger and times. Between two columns that have a series stands what all rows
/// have there: the commas of the empty ones.
class Columns {
 public:
  /// To be called in the order of the columns. `series` must outlive the writing.
  template <class Series>
  void add(SeriesColumn column, const Series& series) {
    if (series.empty()) return;
    cells_.push_back([&series, between = commasBefore(column), cells = Cells<typename Series::value_type>()](
                         std::string& text, std::size_t row) mutable {
      text += between;
      if (row < series.size()) cells.append(text, series[row]);
    });
  }
  /// To be called behind the last `add`.
  void end() { rest_ = std::string(seriesFields().size() - 1 - last_, ',') + '\n'; }

  void appendRow(std::string& text, std::size_t row) const {
    for (const Cell& cell : cells_) cell(text, row);
    text += rest_;
  }

 private:
  using Cell = std::function<void(std::string& text, std::size_t row)>;

  std::string commasBefore(SeriesColumn column) {
    const auto index = static_cast<std::size_t>(column);
    return std::string(index - std::exchange(last_, index), ',');
  }

  std::size_t last_ = static_cast<std::size_t>(SeriesColumn::Utc);
  std::vector<Cell> cells_;
  std::string rest_;
};

/// Appends the logger, who wears it, and the times of a row.
using RowBegin = std::function<void(std::string& text, std::size_t row)>;

template <class Logger>
RowBegin untimedRows(const Logger& logger) {
  return [before = whoseCells(logger) + ","](std::string& text, std::size_t) { text += before; };
}

/// For rows that are epochs, the first of them at `startDate` (UTC). When that is unknown no row has a time.
template <class Logger>
RowBegin timedRows(const Logger& logger, double startDate, std::size_t samples) {
  if (startDate == hw::UnknownDate) return untimedRows(logger);
  const std::int64_t start = secondsOf(startDate), epoch = logger.Get_EpochLength();
  const double end = static_cast<double>(start + static_cast<std::int64_t>(samples) * epoch);
  auto periods = engineering::offsetPeriods(logger, startDate, end / hw::SecondsPerDay);
  return [start, epoch, periods = std::move(periods), next = std::size_t{0}, offset = std::int64_t{0},
          localTimes = Times(whoseCells(logger)), utcTimes = Times(),
          between = std::string()](std::string& text, std::size_t row) mutable {
    const std::int64_t utc = start + static_cast<std::int64_t>(row) * epoch;
    for (; next < periods.size() && secondsOf(periods[next].FromUtc) <= utc; ++next) {
      offset = std::int64_t{periods[next].Minutes} * 60;
      between = offsetText(periods[next].Minutes) + ",";
    }
    localTimes.append(text, utc + offset);
    text += between;
    utcTimes.append(text, utc);
    text += 'Z';
  };
}

void addRows(const TextSink& sink, Columns& columns, std::size_t samples, const RowBegin& begin) {
  columns.end();
  std::string text;
  for (std::size_t row = 0; row < samples; ++row) {
    begin(text, row);
    columns.appendRow(text, row);
    if (text.size() < Piece) continue;
    sink(text);
    text.clear();
  }
  sink(text);
}

template <class Logger>
std::size_t samplesOf(const Logger& logger) {
  return static_cast<std::size_t>(std::max(0, logger.Get_Samples()));
}

void addLight(Columns& columns, const hw::Class_VardenLogger& logger, const hw::LoggingMode* mode) {
  using enum SeriesColumn;
  const auto part = mode != nullptr ? mode->Light : hw::LightPart::Colours;
  switch (part) {
    case hw::LightPart::Frequency:
      columns.add(OffWristFrequency, logger.Get_RedLightArray());
      return;
    case hw::LightPart::Currents:
      columns.add(RedCurrent, logger.Get_RedLightArray());
      columns.add(GreenCurrent, logger.Get_GreenLightArray());
      columns.add(BlueCurrent, logger.Get_BlueLightArray());
      return;
    case hw::LightPart::None:
    case hw::LightPart::Lux:
    case hw::LightPart::CalibrationLux:
    case hw::LightPart::Colours:
      break;
  }
  columns.add(Light, logger.Get_LightArray());
  columns.add(Red, logger.Get_RedLightArray());
  columns.add(Green, logger.Get_GreenLightArray());
  columns.add(Blue, logger.Get_BlueLightArray());
}

}  // namespace

void addSeriesCsv(const TextSink& sink, const hw::Class_VardenLogger& logger, SeriesPart part) {
  if (part == SeriesPart::Everything) sink(headingOf(seriesFields()));
  const auto* mode = hw::findLoggingMode(logger.Get_DeviceType(), logger.Get_AcquisitionMode());
  const bool timed = mode == nullptr || mode->samplesAreEpochs();
  Columns columns;
  columns.add(timed ? SeriesColumn::Activity : SeriesColumn::RawActivity, logger.Get_ActivityArray());
  addLight(columns, logger, mode);
  columns.add(SeriesColumn::Marker, logger.Get_MarkerArray());
  columns.add(SeriesColumn::Marker2, logger.Get_Marker2Array());
  columns.add(SeriesColumn::OffWrist, logger.Get_WristStatusArray());
  const std::size_t samples = samplesOf(logger);
  addRows(sink, columns, samples,
          timed ? timedRows(logger, logger.Get_StartTimeGMT(), samples) : untimedRows(logger));
}

void addSeriesCsv(const TextSink& sink, const hw::Class_Pendrel& logger, SeriesPart part) {
  if (part == SeriesPart::Everything) sink(headingOf(seriesFields()));
  Columns columns;
  columns.add(SeriesColumn::Activity, logger.Get_ActivityArray());
  if (logger.Get_AcquisitionMode() == hw::PD_Mode_ActivityAndSteps)
    columns.add(SeriesColumn::Steps, logger.Get_StepsArray());
  columns.add(SeriesColumn::Marker, logger.Get_MarkerArray());
  const std::size_t samples = samplesOf(logger);
  addRows(sink, columns, samples, timedRows(logger, engineering::startUtc(logger), samples));
}

void addSeriesCsv(const TextSink& sink, const DecodedRecording& recording, SeriesPart part) {
  recording.with([&](const auto& logger) { addSeriesCsv(sink, logger, part); });
}

}  // namespace wristlog
