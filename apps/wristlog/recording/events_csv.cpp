#include "recording/events_csv.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "base/dates.h"
#include "engineering/recording.h"
#include "engineering/zones.h"
#include "recording/codebook.h"
#include "recording/csv_parts.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

constexpr std::array<std::string_view, 14> KindNames{
    "acquisition_start", "acquisition_stop", "marker", "marker2",     "off_wrist",   "on_wrist", "docked",
    "undocked",          "docked_undocked",  "reset",  "low_battery", "memory_full", "damaged",  "other"};
static_assert(KindNames.size() == static_cast<std::size_t>(EventKind::Other) + 1);

/// An event is of the kind when its words begin and end so.
struct KindOfWords {
  std::string_view Begin, End;
  EventKind Kind;
};

constexpr std::array KindsOfWords{
    KindOfWords{"Acquisition Start", "", EventKind::AcquisitionStart},
    KindOfWords{"Acquisition Stop", "", EventKind::AcquisitionStop},
    KindOfWords{"Marker Button 1", "", EventKind::Marker},
    KindOfWords{"Marker Button 2", "", EventKind::Marker2},
    KindOfWords{"", "Currently Off-Wrist", EventKind::OffWrist},
    KindOfWords{"Off-wrist Detected", "", EventKind::OffWrist},
    KindOfWords{"", "Currently On-Wrist", EventKind::OnWrist},
    KindOfWords{"On-wrist Detected", "", EventKind::OnWrist},
    KindOfWords{"", "Currently In Dock", EventKind::Docked},
    KindOfWords{"Docked event", "", EventKind::Docked},
    KindOfWords{"", "Currently Out of Dock", EventKind::Undocked},
    KindOfWords{"Undocked event", "", EventKind::Undocked},
    KindOfWords{"Docked and Undocked event", "", EventKind::DockedAndUndocked},
    KindOfWords{"Self Test", "", EventKind::Reset},
    KindOfWords{"Low Battery", "", EventKind::LowBattery},
    KindOfWords{"Memory Full", "", EventKind::MemoryFull},
    KindOfWords{"Event Decoding Error", "", EventKind::Damaged},
};

/// The offsets from UTC of the times that the events tell.
std::vector<engineering::OffsetPeriod> offsetsOf(const hw::Class_VardenLogger& logger,
                                                 const hw::EventLog& events) {
  double first = hw::UnknownDate, last = hw::UnknownDate;
  for (std::size_t i = 0; i < events.size(); ++i) {
    const double time = events.time(i);
    if (time == hw::UnknownDate) continue;
    first = first == hw::UnknownDate ? time : std::min(first, time);
    last = std::max(last, time);
  }
  if (first == hw::UnknownDate) return {};
  return engineering::offsetPeriods(logger, first, last);
}

}  // namespace

EventKind eventKind(std::string_view words) {
  for (const KindOfWords& row : KindsOfWords)
    if (words.starts_with(row.Begin) && words.ends_with(row.End)) return row.Kind;
  return EventKind::Other;
}

std::span<const std::string_view> eventKindNames() { return KindNames; }

void addEventsCsv(const TextSink& sink, const hw::Class_VardenLogger& logger) {
  sink(headingOf(eventFields()));
  const hw::EventLog& events = engineering::events(logger);
  const auto periods = offsetsOf(logger, events);
  const std::string whose = whoseCells(logger);
  Times localTimes, utcTimes;
  std::string text;
  for (std::size_t i = 0; i < events.size(); ++i) {
    text = whose;
    if (events.time(i) == hw::UnknownDate) {
      text += ',';
    } else {
      const std::int64_t utc = secondsOf(events.time(i));
      const auto after = std::find_if(periods.begin() + 1, periods.end(),
                                      [&](const auto& period) { return secondsOf(period.FromUtc) > utc; });
      const std::int32_t offset = (after - 1)->Minutes;
      localTimes.append(text, utc + std::int64_t{offset} * 60);
      text += offsetText(offset) + ",";
      utcTimes.append(text, utc);
      text += 'Z';
    }
    const std::string words = events.words(i);
    text.append(",").append(KindNames[static_cast<std::size_t>(eventKind(words))]);
    text.append(",").append(csvCell(words)).append(",").append(events.recordHex(i)).append("\n");
    sink(text);
  }
}

}  // namespace wristlog
