#include "recording/plotted_parts.h"

#include <utility>
#include <vector>

#include "base/dates.h"
#include "engineering/dates.h"
#include "engineering/zones.h"
#include "picture/actogram.h"
#include "picture/local_time.h"
#include "picture/markup.h"
#include "words/counted.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

constexpr const char *Begins = "Begins", *Ends = "Ends";

std::string momentWords(const picture::PlottedRecording& plot, std::int64_t utc) {
  const picture::LocalClock clock(plot.Offsets);
  return picture::timeText(clock.at(utc)) + " " + picture::timeWords(plot);
}

}  // namespace

std::int64_t unixSeconds(double date) { return std::llround((date - hw::UnixEpochDate) * hw::SecondsPerDay); }
double dateOf(std::int64_t unixSeconds) {
  return hw::UnixEpochDate + static_cast<double>(unixSeconds) / hw::SecondsPerDay;
}

std::string dayWords(double date) {
  if (date == UnknownDate || date == 0) return {};
  return hw::engineering::isoDate(date).substr(0, 10);
}

std::string sizeWords(float value) { return value > 0 ? picture::number(static_cast<double>(value)) : ""; }

std::string loggerWords(const std::string& model, const std::string& serialNumber) {
  return model + (model.empty() || serialNumber.empty() ? "" : " ") + serialNumber;
}

void addFact(picture::PlottedRecording& plot, const char* label, const std::string& value) {
  if (!value.empty()) plot.Facts.push_back({label, value});
}

void addPeriodFacts(picture::PlottedRecording& plot) {
  addFact(plot, "Epoch", counted(plot.Epoch, "second"));
  addFact(plot, "Epochs", std::to_string(plot.Epochs));
  if (plot.Epochs > 0) {
    addFact(plot, Begins, momentWords(plot, plot.Start));
    addFact(plot, Ends, momentWords(plot, plot.end()));
    addFact(plot, "Lasts", picture::durationText(plot.end() - plot.Start));
  }
  addFact(plot, "Time zone", plot.Zone);
}

void drawIn(picture::PlottedRecording& plot, const DrawnZone& zone) {
  if (plot.Epochs == 0) return;
  std::vector<picture::ClockOffset> offsets;
  for (const auto& period :
       hw::engineering::offsetPeriods(zone.Letters, dateOf(plot.Start), dateOf(plot.end())))
    offsets.push_back({unixSeconds(period.FromUtc), period.Minutes});
  if (offsets == plot.Offsets) return;
  plot.Offsets = std::move(offsets);
  plot.DrawnZone = zone.Name;
  for (picture::Fact& fact : plot.Facts) {
    if (fact.Label == Begins) fact.Value = momentWords(plot, plot.Start);
    if (fact.Label == Ends) fact.Value = momentWords(plot, plot.end());
  }
}

void addMarkers(picture::PlottedRecording& plot, const hy_wristlog::TristateSeries& series, int button) {
  for (std::size_t i = 0; i < std::min(series.size(), plot.Epochs); ++i)
    if (series[i] == hy_wristlog::Tristate::True)
      plot.Markers.push_back({plot.Start + static_cast<std::int64_t>(i) * plot.Epoch, button});
}

void addResets(picture::PlottedRecording& plot, int resets) {
  if (resets > 0)
    plot.Warnings.push_back("The logger was reset " +
                            (resets == 1 ? "once" : std::to_string(resets) + " times") +
                            " since it was configured.");
}

}  // namespace wristlog
