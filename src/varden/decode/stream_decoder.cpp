#include "varden/decode/stream_decoder.h"

#include <algorithm>
#include <array>

#include "base/dates.h"
#include "base/numbers.h"
#include "varden/decode/event_records.h"
#include "varden/failures.h"
#include "varden/firmware.h"

namespace hy_wristlog {

namespace {

constexpr std::array EpochLengths{15, 30, 60, 120, 300};
constexpr std::int64_t OldFirmwareBarrier = 65535;
constexpr std::int32_t LastFirmwareWithBarrier = 28;

[[noreturn]] void refuse(const char* text) { raiseFrom(DecodeProcedure, FailureNumber::OutOfRange, text); }

/// Firmware up to 00.01.0028 recorded wrongly after byte 65535.
bool hasBarrier(const VardenRecord& record) {
  const auto firmware = parseFirmware(record.FirmwareVersion);
  return firmware && firmware->Major == 0 && firmware->Minor == 1 &&
         firmware->Build <= LastFirmwareWithBarrier;
}

}  // namespace

void StreamDecoder::decode() {
  prepare();
  if (!samples_) return;
  try {
    walk();
  } catch (...) {
    walk_.Arrays.settle(walk_.Index);
    throw;
  }
}

std::optional<bool> StreamDecoder::lowBatteryDetected() const {
  return samples_ ? std::optional(walk_.LowBattery) : std::nullopt;
}

void StreamDecoder::prepare() {
  VardenRecord& record = walk_.Record;
  const bool diagnostic = walk_.Options.Diagnostic;
  walk_.Result = Decode_InputError;
  if (record.BytesUsed < 1) return;
  if (!diagnostic && std::count(EpochLengths.begin(), EpochLengths.end(), record.EpochLength) == 0)
    refuse("Invalid Epoch Length");
  if (record.StartTimeGMT < UnixEpochDate) refuse("Invalid Start Time");
  if (!acceptsFirmware()) return;

  if (record.RawData) walk_.Raw = *record.RawData;
  walk_.Length = record.BytesUsed;
  walk_.Quillander = record.DeviceType == KR_QUILLANDER;
  walk_.NewEventFormat = hasNewEventFormat(record);
  barrier_ = hasBarrier(record);
  walk_.Arrays.clear();
  allocate();

  record.MarkerCount = 0;
  record.Marker2Count = 0;
  if (record.EpochLength == 0) fault::raise(fault::DivisionByZero);
  walk_.EpochsPerDay = roundToInt32(SecondsPerDay / record.EpochLength);
  record.EventArray.restart(walk_.Options.DateText);
  samples_.emplace(walk_, hasNewLightScaleFactors(record));
  walk_.Result = Decode_OK;
}

bool StreamDecoder::acceptsFirmware() {
  if (isValidFirmware(walk_.Record)) return true;
  if (!walk_.Options.Diagnostic) refuse("Invalid Firmware Version");
  if (walk_.Options.ShowMessage)
    walk_.Options.ShowMessage("Unknown FW version",
                              "Firmware version is unknown. Do a 'show version' before 'show data'\r\n"
                              "(or, for 00.02.xxxx+ firmware, do a 'show config' before 'show data').");
  return false;
}

void StreamDecoder::allocate() {
  const LoggingMode& mode = requireLoggingMode(walk_.Record, DecodeProcedure);
  if (const char* refusal = refusalToDecode(mode, walk_.Record, walk_.Options.Diagnostic)) refuse(refusal);
  walk_.Mode = &mode;
  const auto bytes = std::min(walk_.Length, static_cast<std::int64_t>(walk_.Raw.size()));
  // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): every mode records something
  walk_.Arrays.allocate(mode.arrays(), walk_.Length, bytes / mode.recordLength() + 1);
}

/// Bytes after a reset cannot be told from samples, so the recording ends with the first reset event that a
/// plain search finds. Each later match moves the end to itself again.
void StreamDecoder::cutAtReset() {
  const std::int64_t end = walk_.Length;
  if (walk_.Record.Resets == 0 || end <= EventRecordLength) return;
  // Byte 3 may be anything.
  constexpr std::array ZeroBytes{2, 4, 5, 6};
  for (std::int64_t i = 0; i <= end - EventRecordLength; ++i) {
    if (walk_.byteAt(i) != EventMark || walk_.byteAt(i + 1) != ResetEvent) continue;
    if (!std::all_of(ZeroBytes.begin(), ZeroBytes.end(), [&](int k) { return walk_.byteAt(i + k) == 0; }))
      continue;
    lengthBeforeReset_ = walk_.Length;
    walk_.Length = i + EventRecordLength;
  }
}

void StreamDecoder::walk() {
  cutAtReset();
  do {
    round();
  } while (walk_.inside(walk_.Position) && !walk_.Stop);
}

void StreamDecoder::round() {
  handleEvents();
  handleStatus();
  handleSample();
  handleStray();
  handleOldFirmwareBarrier();
}

void StreamDecoder::handleEvents() {
  while (!walk_.Stop && walk_.inside(walk_.Position) && walk_.byteAt(walk_.Position) == EventMark) {
    if (walk_.inside(walk_.Position + EventRecordLength - 1))
      handleEventRecord(walk_);
    else
      walk_.Stop = true;
  }
}

void StreamDecoder::handleStatus() {
  if (walk_.Stop || !walk_.inside(walk_.Position) || walk_.byteAt(walk_.Position) != StatusMark) return;
  if (!walk_.inside(walk_.Position + StatusRecordLength - 1))
    walk_.Stop = true;
  else if (!walk_.Acquiring)
    walk_.stop(Decode_MarkerEventOutsideAcquisition);
  else
    handleStatusRecord(walk_);
}

/// Also runs after an event or status record at the very end of the bytes, which adds one epoch without a
/// value.
void StreamDecoder::handleSample() {
  if (walk_.Stop || !walk_.Acquiring) return;
  if (walk_.Options.BeginningOnly && !walk_.inside(walk_.Position + walk_.Mode->recordLength() - 1)) {
    walk_.Stop = true;
    return;
  }
  samples_->decode();
  ++walk_.Index;
  if (!walk_.Stop) samples_->decodeRun(barrier_ ? OldFirmwareBarrier : walk_.Length);
  walk_.LastSample = walk_.timeOf(walk_.Index - 1);
}

void StreamDecoder::handleStray() {
  if (walk_.Stop || walk_.Acquiring || !walk_.inside(walk_.Position)) return;
  if (walk_.byteAt(walk_.Position) == EventMark) return;
  walk_.Result = Decode_NonEventDataOutsideAcquisition;
  if (walk_.Options.Diagnostic)
    ++walk_.Position;
  else
    walk_.Stop = true;
}

void StreamDecoder::handleOldFirmwareBarrier() {
  if (barrier_ && walk_.Position > OldFirmwareBarrier) walk_.stop(Decode_Special65Kdefect);
}

void StreamDecoder::finish() {
  VardenRecord& record = walk_.Record;
  if (samples_) {
    if (lengthBeforeReset_ != 0) {
      record.BytesUsed = fault::narrow<std::int32_t>(lengthBeforeReset_);
      walk_.Result = Decode_POSTcausedEventError;
    }
    const auto used = static_cast<std::size_t>(record.BytesUsed);
    if (record.RawData && record.RawData->size() > used) record.RawData->resize(used);
    walk_.Raw = {};
    record.Samples = fault::narrow<std::int32_t>(walk_.Index);
    walk_.Arrays.settle(walk_.Index > 0 ? walk_.Index : walk_.Arrays.upperBound() + 1);
  }
  record.DecodeResult = walk_.Result;
}

}  // namespace hy_wristlog
