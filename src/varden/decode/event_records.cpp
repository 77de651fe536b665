#include "varden/decode/event_records.h"

#include <array>

#include "base/dates.h"
#include "varden/decode/acquisition.h"
#include "varden/varden_seconds.h"

namespace hy_wristlog {
namespace {

enum EventBit : std::uint8_t {
  AcquisitionStop = 2,
  MemoryFull = 4,
  DockBits = 32 | 64,
  OldInvalid = 128,
};

enum StatusBit : std::uint8_t {
  MarkerButton1 = 1,
  LowBattery = 2,
  OldOffWristDetected = 4,
  OldOnWristDetected = 8,
  OldOffWrist = 16,
  OldMarkerButton2 = 32,
  NewMarkerButton2 = 16,
  NewWristBits = 4 | 8,
};

struct ClosingEvent {
  std::uint8_t Bit;
  const char* Text;
  enmDecodeResult Result;
  bool LowBattery;
};

// The first row that fits counts. Both have the same bit, so a shutdown is reported as a full memory.
constexpr std::array ClosingEvents{
    ClosingEvent{MemoryFull, "Memory Full", Decode_MemoryFull, false},
    ClosingEvent{MemoryFull, "Low Battery Shutdown", Decode_Shutdown, true},
};

enum class DockMove : std::uint8_t { None, In, Out };

struct DockEvent {
  bool NewFormat;
  std::uint8_t Bits;
  const char* Suffix;  ///< after the text of an acquisition event
  const char* Text;    ///< of an event of its own; null: not a valid event
  DockMove Move;
  bool UndockSkip;  ///< set by an event of its own
};

constexpr std::array DockEvents{
    DockEvent{false, 96, " w/ Both Docked and Undocked", "Docked and Undocked event", DockMove::None, false},
    DockEvent{false, 32, " w/ Docked", "Docked event", DockMove::In, false},
    DockEvent{false, 64, " w/ Undocked", "Undocked event", DockMove::Out, false},
    DockEvent{false, 0, "", nullptr, DockMove::None, false},
    DockEvent{true, 96, " w/ Docked Status Changed and Currently In Dock",
              "Docked Status Changed and Currently In Dock", DockMove::In, false},
    DockEvent{true, 32, " w/ Docked Status Changed and Currently Out of Dock",
              "Docked Status Changed and Currently Out of Dock", DockMove::Out, true},
    DockEvent{true, 64, " w/ No Docked Status Change and Currently In Dock",
              "No Docked Status Change and Currently In Dock", DockMove::In, false},
    DockEvent{true, 0, " w/ No Docked Status Change and Currently Out of Dock",
              "No Docked Status Change and Currently Out of Dock", DockMove::Out, false},
};

struct WristStatus {
  std::uint8_t Bits;
  const char* Text;
  bool OffWrist;
  bool OnWristPulse;
};

constexpr std::array NewWristStatuses{
    WristStatus{12, "Off-Wrist Status Changed and Currently Off-Wrist", true, false},
    WristStatus{4, "Off-Wrist Status Changed and Currently On-Wrist", false, true},
    WristStatus{8, "No Off-Wrist Status Change and Currently Off-Wrist", true, false},
    WristStatus{0, "No Off-Wrist Status Change and Currently On-Wrist", false, false},
};

const DockEvent& dockEvent(bool newFormat, std::uint8_t bits) {
  for (const DockEvent& row : DockEvents)
    if (row.NewFormat == newFormat && row.Bits == (bits & DockBits)) return row;
  fault::raise(fault::Internal);
}

/// `time` is `UnknownDate` when the record does not tell it. Raises Subscript when the record is not all
/// there.
void addEvent(DecodeWalk& walk, double time, const char* text, const char* suffix = "",
              std::int64_t length = EventRecordLength) {
  walk.byteAt(walk.Position + length - 1);
  walk.Record.EventArray.add(
      time, text, suffix,
      walk.Raw.subspan(static_cast<std::size_t>(walk.Position), static_cast<std::size_t>(length)));
}

void addStatus(DecodeWalk& walk, const char* text) {
  addEvent(walk, walk.timeOf(walk.Index), text, "", StatusRecordLength);
}

/// Bytes 3 to 6 of the record at the position.
std::int32_t eventValue(const DecodeWalk& walk) {
  std::uint32_t value = 0;
  for (std::int64_t i = 6; i >= 3; --i) value = value << 8 | walk.byteAt(walk.Position + i);
  return static_cast<std::int32_t>(value);
}

double eventTime(const DecodeWalk& walk) { return dateFromUnixSeconds(eventValue(walk)); }

void moveDock(DecodeWalk& walk, const DockEvent& event) {
  if (event.Move != DockMove::None) walk.Docked = event.Move == DockMove::In;
}

void handleInvalid(DecodeWalk& walk) {
  addEvent(walk, UnknownDate, "Event Decoding Error");
  walk.stop(Decode_EventDecodingError);
}

void handleReset(DecodeWalk& walk) {
  const bool passed = eventValue(walk) == 0;
  addEvent(walk, UnknownDate,
           passed ? "Self Test Passed: (Reset Occurred)" : "Self Test Failed: (Reset Occurred)");
  walk.stop(passed ? Decode_ResetPOSTpassed : Decode_ResetPOSTfailed);
}

void handleClosing(DecodeWalk& walk, const ClosingEvent& event) {
  addEvent(walk, eventTime(walk), event.Text);
  if (event.LowBattery) walk.LowBattery = true;
  walk.stop(event.Result);
}

void handleAcquisition(DecodeWalk& walk, std::uint8_t bits) {
  const DockEvent& dock = dockEvent(walk.NewEventFormat, bits);
  moveDock(walk, dock);
  if (walk.NewEventFormat) walk.UndockSkip = false;
  const bool start = bits & AcquisitionStart;
  const double time = eventTime(walk);
  addEvent(walk, time, start ? "Acquisition Start" : "Acquisition Stop", dock.Suffix);
  if (start)
    startAcquisition(walk, time);
  else
    stopAcquisition(walk, time);
}

void handleDock(DecodeWalk& walk, std::uint8_t bits) {
  const DockEvent& dock = dockEvent(walk.NewEventFormat, bits);
  // Bit 16 alone in the old format: no event that a logger writes.
  if (!dock.Text) return handleInvalid(walk);
  addEvent(walk, eventTime(walk), dock.Text);
  moveDock(walk, dock);
  if (walk.NewEventFormat) walk.UndockSkip = dock.UndockSkip;
}

void handleEventBits(DecodeWalk& walk, std::uint8_t bits) {
  if (bits == 0 || (!walk.NewEventFormat && bits & OldInvalid)) return handleInvalid(walk);
  if (bits & ResetEvent) return handleReset(walk);
  for (const ClosingEvent& event : ClosingEvents)
    if (bits & event.Bit) return handleClosing(walk, event);
  if (bits & (AcquisitionStart | AcquisitionStop)) return handleAcquisition(walk, bits);
  handleDock(walk, bits);
}

void handleOldWristStatus(DecodeWalk& walk, std::uint8_t status) {
  if (!(status & (OldOffWristDetected | OldOnWristDetected))) return;
  if (status & OldOffWrist)
    walk.OnWristPulse = false;
  else if (status & OldOffWristDetected)
    walk.OnWristPulse = true;
  walk.OffWrist = status & OldOffWrist;
  if (status & OldOffWristDetected) addStatus(walk, "Off-wrist Detected");
  if (status & OldOnWristDetected) addStatus(walk, "On-wrist Detected");
}

void handleNewWristStatus(DecodeWalk& walk, std::uint8_t status) {
  for (const WristStatus& row : NewWristStatuses) {
    if (row.Bits != (status & NewWristBits)) continue;
    addStatus(walk, row.Text);
    walk.OffWrist = row.OffWrist;
    walk.OnWristPulse = row.OnWristPulse;
  }
}

}  // namespace

void handleEventRecord(DecodeWalk& walk) {
  handleEventBits(walk, walk.byteAt(walk.Position + 1));
  walk.Position += EventRecordLength;
}

void handleStatusRecord(DecodeWalk& walk) {
  const std::uint8_t status = walk.byteAt(walk.Position + 1);
  if (status & MarkerButton1) {
    addStatus(walk, "Marker Button 1");
    walk.Arrays.at<series::Marker>(walk.Index) = Tristate::True;
    ++walk.Record.MarkerCount;
  }
  if (walk.Quillander && status & (walk.NewEventFormat ? NewMarkerButton2 : OldMarkerButton2)) {
    addStatus(walk, "Marker Button 2");
    walk.Arrays.at<series::Marker2>(walk.Index) = Tristate::True;
    ++walk.Record.Marker2Count;
  }
  if (status & LowBattery) {
    addStatus(walk, "Low Battery");
    walk.LowBattery = true;
  }
  if (walk.Quillander) {
    if (walk.NewEventFormat)
      handleNewWristStatus(walk, status);
    else
      handleOldWristStatus(walk, status);
  }
  walk.Position += StatusRecordLength;
}

}  // namespace hy_wristlog
