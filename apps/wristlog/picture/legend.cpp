#include "picture/legend.h"

#include <algorithm>
#include <array>
#include <functional>

#include "picture/day_drawing.h"
#include "picture/light_words.h"
#include "picture/markup.h"
#include "picture/shapes.h"

namespace wristlog::picture {
namespace {

constexpr double SwatchWidth = 36, SwatchHeight = 20, CellHeight = 36;
constexpr std::size_t CellsAcross = 3;

/// Draws entries: a swatch, its name, and its meaning.
class Legend {
 public:
  explicit Legend(Sheet& sheet) : sheet_(sheet) {}

  void entry(const std::string& name, const std::string& meaning,
             const std::function<void(double x, double y)>& swatch) {
    constexpr double CellWidth = (SheetWidth - 40) / CellsAcross;
    const std::size_t column = count_ % CellsAcross, row = count_ / CellsAcross;
    const double x = 20 + static_cast<double>(column) * CellWidth;
    const double y = sheet_.y() + static_cast<double>(row) * CellHeight;
    swatch(x, y + 4);
    sheet_.text("a-label", x + SwatchWidth + 8, y + 13, name);
    sheet_.text("a-small", x + SwatchWidth + 8, y + 27, meaning);
    ++count_;
  }

  void finish() {
    const std::size_t rows = (count_ + CellsAcross - 1) / CellsAcross;
    sheet_.down(static_cast<double>(rows) * CellHeight);
  }

 private:
  Sheet& sheet_;
  std::size_t count_ = 0;
};

std::string box(double x, double y) {
  return "M" + number(x) + " " + number(y) + "h" + number(SwatchWidth) + "v" + number(SwatchHeight) + "h" +
         number(-SwatchWidth) + "z";
}

std::string from(double x, double y, const char* strokes) {
  return "M" + number(x) + " " + number(y) + strokes;
}

bool anyColumn(const RecordedDays& days, bool (*fits)(const Column&)) {
  return std::any_of(days.Days.begin(), days.Days.end(), [&](const Day& day) {
    return std::any_of(day.Columns.begin(), day.Columns.end(), fits);
  });
}

void addSeries(Legend& legend, Sheet& sheet, const PlottedRecording& recording, const RecordedDays& days,
               const Scales& scales) {
  if (!recording.Activity.empty()) {
    const std::string minutes = std::to_string(1440 / std::max<std::size_t>(1, days.ColumnsPerDay));
    legend.entry("Activity, means of " + minutes + " minutes",
                 "full height: " + number(scales.Activity) + " counts an epoch", [&](double x, double y) {
                   sheet.path("a-bars", from(x, y + 20, "v-8h4v-6h4v3h4v-8h4v11h4v4h4v-13h4v9h4v8z"));
                 });
    legend.entry("Cut bar", "higher than the row", [&](double x, double y) {
      sheet.path("a-bars", from(x, y + 20, "v-6h12v-12h12v10h12v8z"));
      sheet.path("a-cut", from(x + 12, y + 2, "h12"));
    });
    legend.entry("No activity", "a value of 0: the base line alone",
                 [&](double x, double y) { sheet.path("a-bars", from(x, y + 20, "h36z")); });
  }
  if (!recording.Steps.empty())
    legend.entry(
        "Steps", "full height: " + number(scales.Steps) + " steps an epoch",
        [&](double x, double y) { sheet.path("a-line a-steps", from(x, y + 16, "h8v-6h10v-7h8v12h10")); });
  const std::string scale = powerOfTen(scales.Light.LowestPower) + " to " +
                            withUnit(powerOfTen(scales.Light.HighestPower), " ", scales.Light) +
                            ", logarithmic";
  for (const LightLine& line : recording.Light)
    legend.entry(capital(lightName(line.Colour)), scale, [&](double x, double y) {
      sheet.path(std::string("a-line ") + lineClass(line.Colour), from(x, y + 18, "h8v-11h10v-4h8v7h10"));
    });
}

void addStates(Legend& legend, Sheet& sheet, const PlottedRecording& recording, const RecordedDays& days) {
  const bool wrist = !recording.OffWrist.empty();
  if (wrist)
    legend.entry("Off the wrist", "as the logger felt it", [&](double x, double y) {
      sheet.add("<path fill=\"url(#" + sheet.id("hatch") + ")\" d=\"" + box(x, y) + "\"/>");
    });
  if (anyColumn(days, [](const Column& column) { return column.Covered && !column.hasValue(); }))
    legend.entry("No value", "nothing was stored; unlike a value of 0", [&](double x, double y) {
      sheet.path("a-gap", box(x, y));
      sheet.path("a-gapline", from(x, y + 10, "h36"));
    });
}

void addSigns(Legend& legend, Sheet& sheet, const RecordedDays& days) {
  for (const int button : {1, 2})
    if (days.Totals.Markers[static_cast<std::size_t>(button - 1)] > 0)
      legend.entry("Marker", "button " + std::to_string(button) + " was pressed", [&](double x, double y) {
        sheet.path("a-marker" + std::to_string(button), markerShape(button, x + 18, y + 5, 10));
      });
  std::array<bool, Signs> seen{};
  bool changes = false;
  for (const Day& day : days.Days) {
    for (const auto& sign : day.Signs) seen[static_cast<std::size_t>(sign.second)] = true;
    changes = changes || !day.Changes.empty();
  }
  for (const Sign sign : {Sign::Reset, Sign::LowBattery, Sign::MemoryFull, Sign::Damage})
    if (seen[static_cast<std::size_t>(sign)])
      legend.entry(signWords(sign), "reported by the logger", [&](double x, double y) {
        sheet.path(signClass(sign), signShape(sign, x + 18, y + 5, 10));
      });
  if (changes)
    legend.entry("Change of the clocks", "skipped: blank; repeated: the larger value",
                 [&](double x, double y) {
                   sheet.path("a-change", from(x + 10, y, "v20"));
                   sheet.text("a-tiny", x + 13, y + 9, "+1 h");
                 });
}

}  // namespace

std::string powerOfTen(int power) {
  if (power < -3) return "1e" + std::to_string(power);
  if (power < 0) return "0." + std::string(static_cast<std::size_t>(-power - 1), '0') + "1";
  std::string text = "1" + std::string(static_cast<std::size_t>(power), '0');
  for (std::size_t at = text.size(); at > 3 && text.size() > 4; at -= 3)
    if (at - 3 > 0) text.insert(at - 3, " ");
  return text;
}

void drawLegend(Sheet& sheet, const PlottedRecording& recording, const RecordedDays& days,
                const Scales& scales) {
  Legend legend(sheet);
  addSeries(legend, sheet, recording, days, scales);
  addStates(legend, sheet, recording, days);
  addSigns(legend, sheet, days);
  legend.finish();
}

}  // namespace wristlog::picture
