#include "picture/actogram.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "picture/day_drawing.h"
#include "picture/legend.h"
#include "picture/light_words.h"
#include "picture/local_time.h"
#include "picture/markup.h"
#include "picture/scales.h"
#include "picture/sheet.h"
#include "words/counted.h"

namespace wristlog::picture {
namespace {

constexpr int HoursADay = 24;
/// What stands above the rows of a piece and below them.
constexpr double RoomAbove = 28, RoomBelow = 20;

class Actogram {
 public:
  Actogram(const PlottedRecording& recording, const RecordedDays& days)
      : recording_(recording),
        layout_(recording.Layout),
        shifted_(layout_.StartHour == 0 ? RecordedDays() : daysOf(recording, layout_.StartHour)),
        days_(layout_.StartHour == 0 ? days : shifted_),
        scales_(scalesOf(days_, recording)),
        row_(rowShapeFor(days_.Days.size(), layout_.DaysAcross)) {}

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
    Sheet legend("l");
    const std::string whole = legend.id("all");
    legend.add("<g id=\"" + whole + "\">");
    drawLegend(legend, recording_, days_, scales_);
    legend.add("</g>\n");
    std::vector<std::string> all{
        legend.svg("Legend", "What the strokes and signs of the actogram mean.", false)};
    const std::size_t most = daysOnPage(legend.y());
    for (std::size_t from = 0; from < days_.Days.size(); from += most) {
      if (from > 0) all.push_back(legend.reference(whole, "again"));
      const std::size_t to = std::min(from + most, days_.Days.size());
      Sheet sheet("p" + std::to_string(all.size()));
      rows(sheet, from, to);
      all.back() += sheet.svg(
          title() + ", " + dayText(days_.Days[from].Number) + " to " + dayText(days_.Days[to - 1].Number),
          description(), false);
    }
    return all;
  }

 private:
  std::size_t daysOnPage(double legendHeight) const {
    // On A4 and on Letter, below a heading.
    constexpr double PageHeight = 1340;
    const double room = PageHeight - legendHeight - RoomAbove - RoomBelow;
    const auto fitting = static_cast<std::size_t>(room / row_.Height);
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
    return "Logger " + recording_.Logger + ", " + periodText(recording_) + ". Each row shows " +
           std::to_string(hoursAcross()) + " hours from " + hourText(0) + " on: " + shown + ".";
  }

  void head(Sheet& sheet) const {
    // In its smaller size a title of 64 wide characters still fits.
    constexpr std::size_t LongestLargeTitle = 52;
    const bool isLong = title().size() > LongestLargeTitle;
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
      line("", periodText(recording_) +
                   (recording_.Zone.empty() || !recording_.DrawnZone.empty() ? "" : ": " + recording_.Zone));
    constexpr std::size_t MostWarnings = 4;
    for (std::size_t i = 0; i < std::min(MostWarnings, recording_.Warnings.size()); ++i)
      line("a-warning", recording_.Warnings[i]);
    if (days_.Cut)
      line("a-warning", "Only the first " + std::to_string(days_.Days.size()) + " days are drawn.");
  }

  void rows(Sheet& sheet, std::size_t from, std::size_t to) const {
    sheet.down(RoomAbove);
    hours(sheet, sheet.y() - 6);
    dayNames(sheet, sheet.y() - 18);
    const double top = sheet.y();
    const double height = row_.Height * static_cast<double>(to - from);
    grid(sheet, top, height, to - from);
    for (std::size_t i = from; i < to; ++i) {
      row(sheet, i, i == from, i + 1 == to);
      sheet.down(row_.Height);
    }
    sheet.path("a-frame", "M" + number(SheetLeft) + " " + number(top) + "h" + number(PlotWidth) + "v" +
                              number(height) + "h" + number(-PlotWidth) + "z");
    sheet.down(14);
    hours(sheet, sheet.y());
    sheet.down(RoomBelow - 14);
  }

  int hoursAcross() const { return layout_.DaysAcross * HoursADay; }
  double atHour(int hour) const { return SheetLeft + hour * row_.DayWidth / HoursADay; }
  /// The time of the day at an hour of the row.
  std::string hourText(int hour) const { return clockText((layout_.StartHour + hour) * HourSeconds); }
  bool isMidnight(int hour) const { return (layout_.StartHour + hour) % HoursADay == 0; }
  int hourStep() const { return layout_.DaysAcross > 1 ? 3 : 2; }

  void hours(Sheet& sheet, double y) const {
    for (int hour = 0; hour <= hoursAcross(); hour += hourStep())
      sheet.text("a-small a-middle", atHour(hour), y, hourText(hour));
  }

  /// Names the calendar days between the midnights of a row.
  void dayNames(Sheet& sheet, double y) const {
    constexpr std::array Names{"day of the row", "day after", "second day after"};
    int from = 0;
    for (const char* name : Names) {
      int to = from + 1;
      while (to < hoursAcross() && !isMidnight(to)) ++to;
      if (to <= hoursAcross()) sheet.text("a-small a-middle", (atHour(from) + atHour(to)) / 2, y, name);
      from = to;
    }
  }

  void grid(Sheet& sheet, double top, double height, std::size_t count) const {
    std::string lines, midnights;
    for (int hour = hourStep(); hour < hoursAcross(); hour += hourStep())
      (isMidnight(hour) ? midnights : lines) +=
          "M" + number(atHour(hour)) + " " + number(top) + "v" + number(height);
    for (std::size_t i = 1; i < count; ++i)
      lines += "M" + number(SheetLeft) + " " + number(top + static_cast<double>(i) * row_.Height) + "h" +
               number(PlotWidth);
    sheet.path("a-grid", lines);
    sheet.path("a-midnight", midnights);
  }

  /// Draws a row. A day is drawn once, on the left of its own row; on the right of the row above it, which
  /// double-plotted ones have, is a reference to that.
  void row(Sheet& sheet, std::size_t index, bool first, bool last) const {
    const Day& day = days_.Days[index];
    const double textSink = row_.Lane + row_.plot() / 2 + 4;
    sheet.text(isWeekend(day.Number) ? "a-right a-weekend" : "a-right", SheetLeft - 10,
               sheet.y() + std::min(textSink, row_.Height - 4), dayText(day.Number));
    place(sheet, index, 0);
    if (first) axis(sheet);
    if (layout_.DaysAcross < 2) return;
    if (!last)
      refer(sheet, index + 1, 1);
    else if (index + 1 < days_.Days.size())
      place(sheet, index + 1, 1);
  }

  std::string translated(const Sheet& sheet, int half) const {
    return "translate(" + number(SheetLeft + half * row_.DayWidth) + " " + number(sheet.y()) + ")";
  }

  void place(Sheet& sheet, std::size_t index, int half) const {
    sheet.add("<g transform=\"" + translated(sheet, half) + "\"><g id=\"" + sheet.id(std::to_string(index)) +
              "\">" + drawDay(days_.Days[index], recording_, scales_, row_, sheet.id("hatch")) +
              "</g></g>\n");
  }

  void refer(Sheet& sheet, std::size_t index, int half) const {
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
      ticks += "M" + number(SheetLeft + PlotWidth) + " " + number(y) + "h" + (labelled ? "5" : "3");
      if (!labelled) continue;
      const std::string power = powerOfTen(light.LowestPower + i);
      sheet.text("a-tiny", SheetLeft + PlotWidth + 7, y + 3,
                 i == powers ? withUnit(power, " ", light) : power);
    }
    sheet.path("a-midnight", ticks);
  }

  const PlottedRecording& recording_;
  const Layout& layout_;
  RecordedDays shifted_;  ///< the days of rows that begin at another hour than midnight
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
  return text(recording.Start) + " to " + text(recording.end()) + ", " + timeWords(recording);
}

std::string timeWords(const PlottedRecording& recording) {
  return recording.DrawnZone.empty() ? "local time" : "time of " + recording.DrawnZone;
}

}  // namespace wristlog::picture
