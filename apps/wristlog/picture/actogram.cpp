#include "picture/actogram.h"

#include <algorithm>
#include <cmath>

#include "picture/day_drawing.h"
#include "picture/legend.h"
#include "picture/local_time.h"
#include "picture/markup.h"
#include "picture/scales.h"
#include "picture/sheet.h"
#include "words/counted.h"

namespace wristlog::picture {
namespace {

constexpr double HourWidth = DayWidth / 24;

class Actogram {
 public:
  Actogram(const PlottedRecording& recording, const RecordedDays& days)
      : recording_(recording),
        days_(days),
        scales_(scalesOf(days, recording.LightAxis)),
        row_(rowShapeFor(days.Days.size())) {}

  std::string alone() const {
    Sheet sheet("a");
    head(sheet);
    sheet.down(14);
    drawLegend(sheet, recording_, days_, scales_);
    sheet.down(8);
    if (!days_.Days.empty()) rows(sheet, 0, days_.Days.size());
    sheet.down(10);
    return sheet.svg(title(), description(), true);
  }

  std::vector<std::string> pieces() const {
    std::vector<std::string> all;
    Sheet legend("l");
    drawLegend(legend, recording_, days_, scales_);
    all.push_back(legend.svg("Legend", "What the strokes and signs of the actogram mean.", false));
    const std::size_t most = daysOnPage();
    for (std::size_t from = 0; from < days_.Days.size(); from += most) {
      const std::size_t to = std::min(from + most, days_.Days.size());
      Sheet sheet("p" + std::to_string(all.size()));
      rows(sheet, from, to);
      all.push_back(sheet.svg(
          title() + ", " + dayText(days_.Days[from].Number) + " to " + dayText(days_.Days[to - 1].Number),
          description(), false));
    }
    return all;
  }

 private:
  std::size_t daysOnPage() const {
    constexpr double PageHeight = 1340;
    const auto fitting = static_cast<std::size_t>(PageHeight / row_.Height);
    return days_.Days.size() <= fitting ? fitting : fitting / 7 * 7;
  }

  std::string title() const {
    return (recording_.IsPart ? "Beginning of a recording of " : "Actogram of ") +
           (recording_.Subject.empty() ? std::string("an unnamed subject") : recording_.Subject);
  }

  std::string description() const {
    if (days_.Days.empty()) return "The recording holds no epochs.";
    std::string shown;
    const auto show = [&](bool present, const char* what) {
      if (present) shown += (shown.empty() ? "" : ", ") + std::string(what);
    };
    show(!recording_.Activity.empty(), "activity as bars");
    show(!recording_.Steps.empty(), "steps as a line");
    show(!recording_.Light.empty(), "light as lines on a logarithmic scale");
    return "Logger " + recording_.Logger + ", " + periodText(recording_) +
           ". Each row shows a day and the day that follows it: " + shown + ".";
  }

  void head(Sheet& sheet) const {
    // A title of 64 wide characters still fits in its smaller size.
    const bool isLong = title().size() > 52;
    sheet.down(isLong ? 26 : 32);
    sheet.text(isLong ? "a-label" : "a-title", 20, sheet.y(), title());
    const auto line = [&](const char* classes, const std::string& words) {
      sheet.down(18);
      sheet.text(classes, 20, sheet.y(), words);
    };
    line("", "Logger " + recording_.Logger + ", an epoch of " + std::to_string(recording_.Epoch) + " s, " +
                 counted(static_cast<std::int64_t>(recording_.Epochs), "epoch"));
    if (days_.Days.empty())
      line("a-warning", "The recording holds no epochs.");
    else
      line("",
           periodText(recording_) + ", local time" + (recording_.Zone.empty() ? "" : ": " + recording_.Zone));
    constexpr std::size_t MostWarnings = 4;
    for (std::size_t i = 0; i < std::min(MostWarnings, recording_.Warnings.size()); ++i)
      line("a-warning", recording_.Warnings[i]);
    if (days_.Cut)
      line("a-warning", "Only the first " + std::to_string(days_.Days.size()) + " days are drawn.");
  }

  void rows(Sheet& sheet, std::size_t from, std::size_t to) const {
    sheet.down(28);
    hours(sheet, sheet.y() - 6);
    sheet.text("a-small a-middle", SheetLeft + DayWidth / 2, sheet.y() - 18, "day of the row");
    sheet.text("a-small a-middle", SheetLeft + DayWidth * 1.5, sheet.y() - 18, "day after");
    const double top = sheet.y();
    const double height = row_.Height * static_cast<double>(to - from);
    grid(sheet, top, height, to - from);
    for (std::size_t i = from; i < to; ++i) {
      row(sheet, i, i == from, i + 1 == to);
      sheet.down(row_.Height);
    }
    sheet.path("a-frame", "M" + number(SheetLeft) + " " + number(top) + "h" + number(2 * DayWidth) + "v" +
                              number(height) + "h" + number(-2 * DayWidth) + "z");
    sheet.down(14);
    hours(sheet, sheet.y());
    sheet.down(6);
  }

  static void hours(Sheet& sheet, double y) {
    for (int hour = 0; hour <= 48; hour += 3)
      sheet.text("a-small a-middle", SheetLeft + hour * HourWidth, y, clockText(LocalSeconds{hour} * 3600));
  }

  void grid(Sheet& sheet, double top, double height, std::size_t count) const {
    std::string lines;
    for (int hour = 3; hour < 48; hour += 3)
      if (hour != 24)
        lines += "M" + number(SheetLeft + hour * HourWidth) + " " + number(top) + "v" + number(height);
    for (std::size_t i = 1; i < count; ++i)
      lines += "M" + number(SheetLeft) + " " + number(top + static_cast<double>(i) * row_.Height) + "h" +
               number(2 * DayWidth);
    sheet.path("a-grid", lines);
    sheet.path("a-midnight", "M" + number(SheetLeft + DayWidth) + " " + number(top) + "v" + number(height));
  }

  /// Draws a row. A day is drawn once, on the left of its own row; on the right of the row above it is a
  /// reference to that.
  void row(Sheet& sheet, std::size_t index, bool first, bool last) const {
    const Day& day = days_.Days[index];
    const double textSink = row_.Lane + row_.plot() / 2 + 4;
    sheet.text(isWeekend(day.Number) ? "a-right a-weekend" : "a-right", SheetLeft - 10,
               sheet.y() + std::min(textSink, row_.Height - 4), dayText(day.Number));
    place(sheet, index, 0);
    if (!last)
      refer(sheet, index + 1, 1);
    else if (index + 1 < days_.Days.size())
      place(sheet, index + 1, 1);
    if (first) axis(sheet);
  }

  static std::string translated(const Sheet& sheet, int half) {
    return "translate(" + number(SheetLeft + half * DayWidth) + " " + number(sheet.y()) + ")";
  }

  void place(Sheet& sheet, std::size_t index, int half) const {
    sheet.add("<g transform=\"" + translated(sheet, half) + "\"><g id=\"" + sheet.id(std::to_string(index)) +
              "\">" + drawDay(days_.Days[index], recording_, scales_, row_, sheet.id("hatch")) +
              "</g></g>\n");
  }

  static void refer(Sheet& sheet, std::size_t index, int half) {
    sheet.add("<use href=\"#" + sheet.id(std::to_string(index)) + "\" transform=\"" +
              translated(sheet, half) + "\"/>\n");
  }

  /// The ticks of light beside the first row, when they can be read.
  void axis(Sheet& sheet) const {
    const LightScale& light = scales_.Light;
    const int powers = light.HighestPower - light.LowestPower;
    if (recording_.Light.empty() || powers < 1) return;
    constexpr double RoomForLabel = 12;
    const double step = row_.linePlot() / powers;
    const int every = std::max(1, static_cast<int>(std::ceil(RoomForLabel / step)));
    std::string ticks;
    for (int i = 0; i <= powers; ++i) {
      const bool labelled = (powers - i) % every == 0;
      const double y = sheet.y() + row_.lineBase() - step * i;
      ticks += "M" + number(SheetLeft + 2 * DayWidth) + " " + number(y) + "h" + (labelled ? "5" : "3");
      if (labelled)
        sheet.text("a-tiny", SheetLeft + 2 * DayWidth + 7, y + 3,
                   powerOfTen(light.LowestPower + i) + (i == powers ? " " + light.Unit : ""));
    }
    sheet.path("a-midnight", ticks);
  }

  const PlottedRecording& recording_;
  const RecordedDays& days_;
  Scales scales_;
  RowShape row_;
};

}  // namespace

std::string actogramSvg(const PlottedRecording& recording, const RecordedDays& days) {
  return Actogram(recording, days).alone();
}

std::vector<std::string> actogramPieces(const PlottedRecording& recording, const RecordedDays& days) {
  return Actogram(recording, days).pieces();
}

std::string periodText(const PlottedRecording& recording) {
  const LocalClock clock(recording.Offsets);
  const auto text = [&](std::int64_t utc) {
    return dateText(dayOf(clock.at(utc))) + " " + clockText(clock.at(utc));
  };
  return text(recording.Start) + " to " + text(recording.end());
}

}  // namespace wristlog::picture
