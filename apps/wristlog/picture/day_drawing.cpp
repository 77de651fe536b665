#include "picture/day_drawing.h"

#include <algorithm>
#include <cmath>

#include "picture/markup.h"
#include "picture/shapes.h"
#include "picture/sheet.h"

namespace wristlog::picture {
namespace {

using Tenths = std::int64_t;

Tenths tenths(double pixels) { return std::llround(pixels * 10); }

/// A path of horizontal and vertical strokes, in short relative commands.
class Staircase {
 public:
  void moveTo(Tenths x, Tenths y) {
    flushLevel();
    command('M', x);
    if (y >= 0) data_ += ' ';
    appendTenths(data_, y);
    y_ = y;
  }
  void levelAt(Tenths y, Tenths width) {
    if (y != y_) {
      flushLevel();
      command('v', y - y_);
      y_ = y;
    }
    level_ += width;
  }
  void close() {
    flushLevel();
    data_ += 'z';
  }
  std::string data() {
    flushLevel();
    return std::move(data_);
  }

 private:
  void command(char letter, Tenths length) {
    data_ += letter;
    appendTenths(data_, length);
  }
  void flushLevel() {
    if (level_ != 0) command('h', level_);
    level_ = 0;
  }

  std::string data_;
  Tenths y_ = 0, level_ = 0;
};

/// Signs hang beside a line at their moment, like flags, so that a marker of the same moment stays visible.
/// Those of one time hang side by side.
constexpr double FlagRoom = 10, SignRoom = 14;

class DayDrawing {
 public:
  DayDrawing(const Day& day, const RowShape& row)
      : day_(day), row_(row), width_(tenths(row.DayWidth) / std::ssize(day.Columns)) {}

  std::string take() { return std::move(svg_); }

  /// A box from `top` to `bottom` over every run of columns that `fits` accepts.
  template <class Fits>
  void boxes(const std::string& attributes, double top, double bottom, const Fits& fits) {
    Staircase path;
    forRuns(fits, [&](std::size_t from, std::size_t to) {
      path.moveTo(x(from), tenths(bottom));
      path.levelAt(tenths(top), x(to) - x(from));
      path.levelAt(tenths(bottom), 0);
      path.close();
    });
    add(attributes, path.data());
  }

  template <class Fits>
  void levels(const std::string& attributes, double y, const Fits& fits) {
    Staircase path;
    forRuns(fits, [&](std::size_t from, std::size_t to) {
      path.moveTo(x(from), tenths(y));
      path.levelAt(tenths(y), x(to) - x(from));
    });
    add(attributes, path.data());
  }

  /// Bars up from the base line; a value of 0 draws nothing.
  template <class Share>
  void bars(const std::string& attributes, const Share& share) {
    Staircase path;
    forValues(path, true, [&](const Column& column) { return row_.base() - share(column) * row_.plot(); });
    add(attributes, path.data());
  }

  /// `y` gives the place of a column's value, or NaN.
  template <class Place>
  void line(const std::string& attributes, const Place& y) {
    Staircase path;
    forValues(path, false, y);
    add(attributes, path.data());
  }

  void add(const std::string& attributes, const std::string& data) {
    if (!data.empty()) svg_ += "<path " + attributes + " d=\"" + data + "\"/>";
  }

  void changes() {
    for (const ClockChange& change : day_.Changes) {
      const double at = left(change.Column);
      add("class=\"a-change\"", "M" + number(at) + " 0V" + number(row_.base()));
      const std::int64_t minutes = change.Seconds / 60;
      const std::string words = minutes % 60 == 0 ? number(static_cast<double>(minutes) / 60) + " h"
                                                  : number(static_cast<double>(minutes)) + " min";
      svg_ += "<text class=\"a-text a-tiny\" x=\"" + number(at + 3) + "\" y=\"" + number(row_.Lane - 1.5) +
              "\">" + (minutes > 0 ? "+" : "") + words + "</text>";
    }
  }

  void markers() {
    for (int button : {1, 2}) {
      std::string data;
      for (const std::size_t column : day_.Markers[static_cast<std::size_t>(button - 1)])
        data += markerShape(button, centre(column), 1, row_.Lane - 3);
      add("class=\"a-marker" + std::to_string(button) + "\"", data);
    }
  }

  void signs() {
    double free = 0;
    for (const auto& [column, sign] : day_.Signs) {
      const double at = centre(column);
      double place = std::max(at + FlagRoom, free);
      if (place > row_.DayWidth) place = at - FlagRoom;
      free = place + SignRoom;
      add("class=\"a-drop\"", "M" + number(at) + " " + number(row_.Lane) + "V" + number(row_.base()));
      add(std::string("class=\"") + signClass(sign) + "\"", signShape(sign, place, 1, row_.Lane - 2));
    }
  }

 private:
  Tenths x(std::size_t column) const { return static_cast<Tenths>(column) * width_; }
  double left(std::size_t column) const { return static_cast<double>(x(column)) / 10; }
  double centre(std::size_t column) const {
    return static_cast<double>(x(column)) / 10 + static_cast<double>(width_) / 20;
  }

  template <class Fits, class Run>
  void forRuns(const Fits& fits, const Run& run) {
    const std::size_t count = day_.Columns.size();
    for (std::size_t from = 0; from < count; ++from) {
      if (!fits(day_.Columns[from])) continue;
      std::size_t to = from + 1;
      while (to < count && fits(day_.Columns[to])) ++to;
      run(from, to);
      from = to;
    }
  }

  template <class Place>
  void forValues(Staircase& path, bool closed, const Place& y) {
    const auto has = [&](const Column& column) { return !std::isnan(y(column)); };
    const auto height = [&](std::size_t column) { return tenths(y(day_.Columns[column])); };
    const Tenths base = tenths(row_.base());
    forRuns(has, [&](std::size_t from, std::size_t to) {
      path.moveTo(x(from), closed ? base : height(from));
      for (std::size_t column = from; column < to; ++column) path.levelAt(height(column), width_);
      if (!closed) return;
      path.levelAt(base, 0);
      path.close();
    });
  }

  const Day& day_;
  const RowShape& row_;
  Tenths width_;
  std::string svg_;
};

}  // namespace

RowShape rowShapeFor(std::size_t days, int daysAcross) {
  const double width = PlotWidth / daysAcross;
  if (days <= 14) return {64, 10, width};
  if (days <= 62) return {40, 9, width};
  if (days <= 140) return {28, 8, width};
  return {22, 6, width};
}

const char* lineClass(LightColour colour) {
  switch (colour) {
    case LightColour::Lux:
    case LightColour::Frequency:
      return "a-lux";
    case LightColour::Red:
      return "a-red";
    case LightColour::Green:
      return "a-green";
    case LightColour::Blue:
      return "a-blue";
  }
  return "";
}

std::string drawDay(const Day& day, const PlottedRecording& recording, const Scales& scales,
                    const RowShape& row, const std::string& hatch) {
  DayDrawing drawing(day, row);
  const auto isGap = [](const Column& column) { return column.Covered && !column.hasValue(); };
  const double middle = row.base() - row.plot() / 2;
  drawing.boxes("class=\"a-gap\"", row.Lane, row.base(), isGap);
  drawing.levels("class=\"a-gapline\"", middle, isGap);
  drawing.boxes("fill=\"url(#" + hatch + ")\"", row.Lane, row.base(),
                [](const Column& column) { return column.OffWrist && column.hasValue(); });
  drawing.bars("class=\"a-bars\"", [&](const Column& column) {
    return linearShare(static_cast<double>(column.Activity), scales.Activity);
  });
  drawing.levels("class=\"a-cut\"", row.Lane, [&](const Column& column) {
    return static_cast<double>(column.Activity) > scales.Activity;
  });
  drawing.line("class=\"a-line a-steps\"", [&](const Column& column) {
    return row.lineBase() - linearShare(static_cast<double>(column.Steps), scales.Steps) * row.linePlot();
  });
  for (std::size_t i = 0; i < recording.Light.size() && i < MostLightLines; ++i)
    drawing.line(std::string("class=\"a-line ") + lineClass(recording.Light[i].Colour) + "\"",
                 [&](const Column& column) {
                   const double share = logarithmicShare(static_cast<double>(column.Light[i]), scales.Light);
                   return row.lineBase() - share * row.linePlot();
                 });
  drawing.changes();
  drawing.signs();
  drawing.markers();
  return drawing.take();
}

}  // namespace wristlog::picture
