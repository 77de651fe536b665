#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "hy_wristlog/Class_VardenLogger.h"
#include "recording/series_csv.h"

namespace wristlog {

/// What an event is. Of docks and wrist it tells the state, which need not be new.
enum class EventKind : std::uint8_t {
  AcquisitionStart,
  AcquisitionStop,
  Marker,
  Marker2,
  OffWrist,
  OnWrist,
  Docked,
  Undocked,
  DockedAndUndocked,
  Reset,
  LowBattery,
  MemoryFull,
  Damaged,
  Other,  ///< the words are not known
};

EventKind eventKind(std::string_view words);
/// Their names in events.csv, in the order of the kinds.
std::span<const std::string_view> eventKindNames();

/// Writes the heading of events.csv, and a row for each event in the recording's order.
void addEventsCsv(const TextSink& sink, const hy_wristlog::Class_VardenLogger& logger);

}  // namespace wristlog
