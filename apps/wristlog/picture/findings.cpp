#include "picture/findings.h"

#include <algorithm>
#include <cmath>

#include "picture/markup.h"
#include "words/counted.h"

namespace wristlog::picture {

std::string shareText(std::int64_t part, std::int64_t whole) {
  const double share = whole > 0 ? 100 * static_cast<double>(part) / static_cast<double>(whole) : 0;
  return part > 0 && share < 0.1 ? "less than 0.1 %" : number(share) + " %";
}

namespace {

/// How many of the bars are cut at a scale that was asked for.
std::string cutText(const RecordedDays& days, double scale) {
  std::int64_t bars = 0, cut = 0;
  for (const Day& day : days.Days)
    for (const Column& column : day.Columns) {
      bars += std::isnan(column.Activity) ? 0 : 1;
      cut += static_cast<double>(column.Activity) > scale ? 1 : 0;
    }
  return "Rows are " + number(scale) + " counts an epoch high, as asked for: " +
         (cut == 0 ? "no bar is higher."
                   : counted(cut, "bar") + " (" + shareText(cut, bars) + ") " + (cut == 1 ? "is" : "are") +
                         " higher, and cut.");
}

}  // namespace

std::vector<std::string> findingsOf(const PlottedRecording& recording, const RecordedDays& days) {
  std::vector<std::string> findings = recording.Warnings;
  const Totals& totals = days.Totals;
  const auto lasting = [&](std::int64_t epochs) { return durationText(epochs * recording.Epoch); };
  if (totals.Epochs == 0) findings.emplace_back("The recording holds no epochs.");
  if (const std::int64_t gaps = totals.Epochs - totals.Valued; gaps > 0)
    findings.push_back("Gaps: " + lasting(gaps) + " (" + shareText(gaps, totals.Epochs) +
                       " of the recording) have no value.");
  if (totals.OffWrist > 0)
    findings.push_back("Off the wrist: " + lasting(totals.OffWrist) + " (" +
                       shareText(totals.OffWrist, totals.Epochs) + " of the recording).");
  if (std::any_of(days.Days.begin(), days.Days.end(), [](const Day& day) { return !day.Changes.empty(); }))
    findings.emplace_back(
        "The clocks were changed during the recording: one local day or more is not 24 hours long.");
  if (!recording.DrawnZone.empty())
    findings.push_back("Days and times are those of " + recording.DrawnZone + ", not of the logger's zone" +
                       (recording.Zone.empty() ? "." : ", " + recording.Zone + "."));
  if (const double scale = recording.Layout.ActivityScale; scale > 0)
    findings.push_back(cutText(days, scale));
  if (days.Cut)
    findings.push_back("The recording is longer than pictures are drawn for: only its first " +
                       std::to_string(days.Days.size()) + " days are shown and counted here.");
  return findings;
}

}  // namespace wristlog::picture
