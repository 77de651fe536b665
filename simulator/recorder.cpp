#include "simulator/recorder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace hy_wristlog::simulator {
namespace {

constexpr std::uint8_t EventMark = 253, StatusMark = 254;
constexpr std::size_t EventLength = 7;
constexpr std::uint8_t AcquisitionStart = 1, AcquisitionStop = 2, MemoryIsFull = 4, PowerReset = 8;
constexpr std::uint8_t OldDocked = 32, OldUndocked = 64, DockChanged = 32, InDock = 64;
constexpr std::uint8_t Marker1 = 1, LowBattery = 2;
constexpr std::uint8_t OldMarker2 = 32, OldOffWrist = 16, OldWentOff = 4, OldWentOn = 8;
constexpr std::uint8_t Marker2 = 16, WristChanged = 4, OffWristNow = 8;
constexpr std::uint8_t MapsToMarker1 = 1, MapsToMarker2 = 2;

/// The readings of a logger that lies still on a desk.
class Desk : public EpochSource {
 public:
  EpochReading read(std::int64_t begins, std::int32_t) override {
    const auto hour = (begins / 3600) % 24;
    EpochReading reading;
    reading.OffWrist = true;
    reading.OffWristFrequency = 900;
    reading.Lux = hour > 6 && hour < 20 ? 120 : 0.02;
    reading.Red = reading.Green = reading.Blue = reading.Lux * 0.08;
    return reading;
  }
};

EpochSource& desk() {
  static Desk source;
  return source;
}

const std::array<std::int32_t, 253>& activityScale() {
  static const auto scale = [] {
    std::array<std::int32_t, 253> steps{};
    std::int32_t value = 0;
    for (auto& step : steps) {
      step = value;
      value = std::min(value + 1 + value / 32, 32767);
    }
    return steps;
  }();
  return scale;
}

void putColours(std::vector<std::uint8_t>& record, const EpochReading& reading, bool fine) {
  const unsigned red = colourCode(reading.Red, fine), green = colourCode(reading.Green, fine),
                 blue = colourCode(reading.Blue, fine);
  for (const unsigned byte : {(red >> 8) | (green >> 8) << 2 | (blue >> 8) << 4, red, green, blue})
    record.push_back(static_cast<std::uint8_t>(byte & 0xFF));
}

void putWord(std::vector<std::uint8_t>& record, unsigned word) {
  record.push_back(static_cast<std::uint8_t>(word >> 8));
  record.push_back(static_cast<std::uint8_t>(word & 0xFF));
}

void putSample(std::vector<std::uint8_t>& record, const EpochReading& reading, const LoggerParts& parts) {
  const auto mode = static_cast<Mode>(parts.Block.number(block::Mode));
  const bool vivid = parts.Model == LoggerModel::Vivid;
  const bool fine = parts.Firmware.hasFineLightScale(parts.Model);
  const auto calibration = static_cast<std::uint8_t>(parts.Block.number(block::ActivityCalibration));
  if (mode == Mode::Activity || mode == Mode::ActivityAndStandardLight ||
      mode == Mode::ActivityAndSpecialLight)
    record.push_back(activityCode(reading.Counts, calibration));
  switch (mode) {
    case Mode::StandardLight:
    case Mode::ActivityAndStandardLight:
    case Mode::LightCalibration:
      if (vivid)
        putColours(record, reading, fine);
      else
        putWord(record, lightCode(reading.Lux));
      break;
    case Mode::SpecialLight:
    case Mode::ActivityAndSpecialLight:
      putWord(record, lightCode(reading.Lux));
      break;
    case Mode::OffWristFrequency:
      putWord(record, std::min<unsigned>(reading.OffWristFrequency, 0xFCFF));
      break;
    case Mode::Activity32Hz:
      record.push_back(static_cast<std::uint8_t>(std::clamp(reading.Counts, 0.0, 252.0)));
      break;
    default:
      break;
  }
}

}  // namespace

std::size_t recordLength(LoggerModel model, Mode mode) {
  const bool vivid = model == LoggerModel::Vivid;
  switch (mode) {
    case Mode::Activity:
    case Mode::Activity32Hz:
      return 1;
    case Mode::StandardLight:
    case Mode::LightCalibration:
      return vivid ? 4 : 2;
    case Mode::ActivityAndStandardLight:
      return vivid ? 5 : 3;
    case Mode::SpecialLight:
    case Mode::OffWristFrequency:
      return vivid ? 2 : 0;
    case Mode::ActivityAndSpecialLight:
      return vivid ? 3 : 0;
    default:
      return 0;
  }
}

std::uint8_t activityCode(double counts, std::uint8_t calibration) {
  const double raw = counts * calibration / 128.0;
  const auto& scale = activityScale();
  const auto above = std::upper_bound(scale.begin(), scale.end(), std::max(raw, 0.0),
                                      [](double value, std::int32_t step) { return value < step; });
  // Several codes stand for the top of the scale; loggers write the first of them.
  return static_cast<std::uint8_t>(std::lower_bound(scale.begin(), above, above[-1]) - scale.begin());
}

std::uint16_t lightCode(double lux) {
  if (lux <= 0) return 0;
  return static_cast<std::uint16_t>(std::clamp(std::lround(32.0 * std::log2(lux * 128.0)), 0L, 0x1FFFL));
}

std::uint16_t colourCode(double irradiance, bool fineScale) {
  if (irradiance <= 0) return 0;
  const double exponent = std::log2(irradiance * 1e-6) + (fineScale ? 36.0 : 30.0);
  return static_cast<std::uint16_t>(std::clamp(std::lround(32.0 * exponent), 0L, 0x3FFL));
}

Recorder::Recorder(Timeline& timeline, LoggerParts& parts)
    : parts_(parts), source_(&desk()), alarm_(timeline, [this] { tick(); }) {}

void Recorder::setSource(EpochSource* source) { source_ = source != nullptr ? source : &desk(); }

void Recorder::arm() {
  if (recording()) end(parts_.Clock.seconds() + 1);
  stopped_ = false;
  parts_.Block.set(block::LowPowerShutdown, ShutdownNotOccurred);
  reconsider();
}

void Recorder::reconsider() {
  if (recording()) {
    scheduleTick();
    return;
  }
  alarm_.cancel();
  state_ = State::Idle;
  const std::int64_t now = parts_.Clock.seconds(), start = parts_.Block.signedNumber(block::StartTime);
  if (stopped_ || parts_.InStorage || epochLength() < 1 || recordLength(parts_.Model, mode()) == 0) return;
  if (stopTime() <= now || stopTime() <= start) return;
  if (start <= now) {
    begin(now);
    return;
  }
  state_ = State::Waiting;
  alarm_.set(parts_.Clock.whenShows(start));
}

void Recorder::stop() {
  if (recording()) end(parts_.Clock.seconds() + 1);
  state_ = State::Idle;
  stopped_ = true;
  alarm_.cancel();
}

void Recorder::clockChanged() {
  if (recording()) epochBegins_ = parts_.Clock.seconds();
  reconsider();
}

void Recorder::begin(std::int64_t time) {
  state_ = State::Recording;
  parts_.Block.set(block::DataAvailable, FlagYes);
  if (used() == 0) offWrist_ = lowBatteryTold_ = false;
  std::uint8_t dock = docked_ ? InDock : std::uint8_t{0};
  if (!parts_.Firmware.hasNewEvents()) dock = docked_ ? OldDocked : leftDock_ ? OldUndocked : std::uint8_t{0};
  leftDock_ = false;
  epochBegins_ = time;
  scheduleTick();
  writeEvent(AcquisitionStart | dock, static_cast<std::uint32_t>(time));
}

/// The stop event bears the second after the last one of the recording, so that it never has a time at which
/// an epoch is still being written.
void Recorder::end(std::int64_t time) {
  state_ = State::Idle;
  alarm_.cancel();
  std::uint8_t dock = docked_ && parts_.Firmware.hasNewEvents() ? InDock : std::uint8_t{0};
  writeEvent(AcquisitionStop | dock, static_cast<std::uint32_t>(time));
}

void Recorder::scheduleTick() {
  alarm_.set(parts_.Clock.whenShows(std::min(epochBegins_ + epochLength(), stopTime() + 1)));
}

void Recorder::tick() {
  const std::int64_t now = parts_.Clock.seconds();
  if (state_ == State::Waiting) {
    begin(parts_.Block.signedNumber(block::StartTime));
    return;
  }
  if (!recording()) return;
  if (epochBegins_ + epochLength() <= std::min(now, stopTime())) {
    writeEpoch();
    if (recording() && parts_.Battery.exhausted()) shutDown();
  } else if (now > stopTime()) {
    end(now);
  }
  if (recording()) scheduleTick();
}

void Recorder::shutDown() {
  ConfigBlock& block = parts_.Block;
  const std::uint32_t counters = block.number(block::Counters);
  const std::uint32_t shutdowns = std::min(counters / 16 + 1, 15U);
  block.set(block::Counters, counters % 16 + shutdowns * 16);
  block.set(block::LowPowerShutdown, FlagYes);
  stop();
}

void Recorder::dockChanged(bool docked) {
  docked_ = docked;
  parts_.Battery.setDocked(docked);
  if (!recording()) {
    leftDock_ = !docked;
    return;
  }
  std::uint8_t bits = docked ? DockChanged | InDock : DockChanged;
  if (!parts_.Firmware.hasNewEvents()) bits = docked ? OldDocked : OldUndocked;
  writeEvent(bits, static_cast<std::uint32_t>(parts_.Clock.seconds()));
}

void Recorder::persist(SavedState& state) {
  state.number("recorder.state", state_, 0, static_cast<std::int64_t>(State::Recording));
  state.flag("recorder.stopped", stopped_);
  state.flag("recorder.docked", docked_);
  state.flag("recorder.left_dock", leftDock_);
  state.flag("recorder.off_wrist", offWrist_);
  state.flag("recorder.low_battery_told", lowBatteryTold_);
  state.number("recorder.epoch_begins", epochBegins_, INT32_MIN, UINT32_MAX);
  if (!state.loading()) return;
  alarm_.cancel();
  if (state_ == State::Idle) return;
  state.require(epochLength() >= 1 && recordLength(parts_.Model, mode()) > 0,
                "the recording's mode and epoch");
  if (recording())
    scheduleTick();
  else
    alarm_.set(parts_.Clock.whenShows(parts_.Block.signedNumber(block::StartTime)));
}

void Recorder::powerReset(std::uint32_t selfTest) {
  const std::uint32_t counters = parts_.Block.number(block::Counters);
  parts_.Block.set(block::Counters, counters / 16 * 16 + std::min(counters % 16 + 1, 15U));
  if (!recording()) return;
  writeEvent(PowerReset, selfTest);
  if (recording()) begin(parts_.Clock.seconds());
}

std::uint8_t Recorder::statusBits(const EpochReading& reading) {
  const bool vivid = parts_.Model == LoggerModel::Vivid, modern = parts_.Firmware.hasNewEvents();
  const auto map = [&](BlockField button) { return parts_.Block.number(button); };
  const std::uint32_t pressed =
      (reading.Button1 ? map(block::Button1) : 0U) | (reading.Button2 ? map(block::Button2) : 0U);
  std::uint8_t bits = 0;
  if (vivid ? (pressed & MapsToMarker1) != 0 : reading.Button1) bits |= Marker1;
  if (vivid && (pressed & MapsToMarker2) != 0) bits |= modern ? Marker2 : OldMarker2;
  const bool low = parts_.Battery.low();
  if (low && !lowBatteryTold_) bits |= LowBattery;
  const bool turned = vivid && reading.OffWrist != offWrist_;
  if (vivid && turned) bits |= modern ? WristChanged : reading.OffWrist ? OldWentOff : OldWentOn;
  if (bits == 0) return 0;
  if (low) bits |= LowBattery;
  if (vivid && reading.OffWrist) bits |= modern ? OffWristNow : OldOffWrist;
  return bits;
}

void Recorder::writeEpoch() {
  EpochReading reading = source_->read(epochBegins_, epochLength());
  if (docked_) {
    // A logger in a dock is on no wrist, even in the middle of `wear`.
    reading.OffWrist = true;
    reading.Counts = 0;
    reading.Button1 = reading.Button2 = false;
  }
  epochBegins_ += epochLength();
  const std::uint8_t status = statusBits(reading);
  std::vector<std::uint8_t> record;
  if (status != 0) record = {StatusMark, status};
  putSample(record, reading, parts_);
  if (record.size() + EventLength > room()) {
    declareFull();
    return;
  }
  offWrist_ = reading.OffWrist;
  if ((status & LowBattery) != 0) lowBatteryTold_ = true;
  append(record);
}

std::size_t Recorder::room() const { return parts_.Memory.size() - std::min(parts_.Memory.size(), used()); }

/// While recording, room for one more event is kept: the one that tells that the memory is full.
void Recorder::writeEvent(std::uint8_t bits, std::uint32_t value) {
  if (recording() && room() < 2 * EventLength) {
    declareFull();
    return;
  }
  if (room() < EventLength) return;
  std::array<std::uint8_t, EventLength> event{EventMark, bits, 0};
  for (std::size_t i = 0; i < 4; ++i) event[3 + i] = static_cast<std::uint8_t>(value >> (8 * i));
  append(event);
}

void Recorder::declareFull() {
  const bool wasRecording = recording();
  state_ = State::Idle;
  stopped_ = true;
  alarm_.cancel();
  if (parts_.Firmware.hasMemoryFullFlag()) parts_.Block.set(block::MemoryFull, FlagYes);
  if (wasRecording) writeEvent(MemoryIsFull, static_cast<std::uint32_t>(parts_.Clock.seconds()));
}

void Recorder::append(std::span<const std::uint8_t> bytes) {
  std::size_t address = used();
  for (const std::uint8_t byte : bytes) parts_.Memory.write(address++, byte);
  parts_.Block.set(block::NextAddress, static_cast<std::int64_t>(address));
}

}  // namespace hy_wristlog::simulator
