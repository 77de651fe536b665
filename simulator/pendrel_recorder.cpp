#include "simulator/pendrel_recorder.h"

#include <algorithm>
#include <cmath>

namespace hy_wristlog::simulator {
namespace {

constexpr std::uint8_t MarkerByte = 254, MostSteps = 253;
constexpr std::int32_t LargestStep = 32767;

}  // namespace

PendrelScale::PendrelScale(std::int32_t epochLength, std::uint8_t calibration)
    : rawPerCount_(calibration / 128.0) {
  std::int32_t value = 0;
  for (auto& step : steps_) {
    step = value;
    value = std::min(value + 1 + epochLength / 15 + value / 64, LargestStep);
  }
}

std::uint8_t PendrelScale::code(double counts) const {
  const auto raw = static_cast<std::int32_t>(std::clamp(counts * rawPerCount_, 0.0, double{LargestStep}));
  const auto above = std::ranges::upper_bound(steps_, raw);
  // Several codes stand for the top of the scale; loggers write the first of them.
  return static_cast<std::uint8_t>(std::ranges::lower_bound(steps_, above[-1]) - steps_.begin());
}

PendrelRecorder::PendrelRecorder(Timeline& timeline, PendrelParts& parts)
    : timeline_(timeline), parts_(parts), alarm_(timeline, [this] { tick(); }), scale_(15, 128) {}

void PendrelRecorder::setDrift(double partsPerMillion) {
  nanosecondsPerSecond_ = 1000000000 - std::llround(std::clamp(partsPerMillion, -1e5, 1e5) * 1000.0);
}

nanoseconds PendrelRecorder::lasting(std::int64_t seconds) const {
  return nanoseconds{seconds * nanosecondsPerSecond_};
}

void PendrelRecorder::stop() {
  state_ = State::Idle;
  alarm_.cancel();
}

void PendrelRecorder::persist(SavedState& state) {
  constexpr std::int32_t MostEpochs = 32896, LongestEpoch = 945;
  constexpr std::int64_t Slowest = 1100000000, Fastest = 900000000;
  state.number("recorder.state", state_, 0, static_cast<std::int64_t>(State::Recording));
  state.number("recorder.delay_epochs", delay_.Epochs, 0, MostEpochs);
  state.number("recorder.delay_seconds", delay_.Seconds, 0, LongestEpoch);
  state.number("recorder.epoch_length", epochLength_, 0, LongestEpoch);
  state.number("recorder.epochs", epochs_, 0, UINT16_MAX);
  state.moment("recorder.begins", begins_);
  state.number("recorder.second", nanosecondsPerSecond_, Fastest, Slowest);
  state.flag("recorder.docked", docked_);
  if (!state.loading()) return;
  alarm_.cancel();
  if (state_ == State::Idle) return;
  state.require(epochLength_ >= 1, "the recording's epoch");
  if (state_ == State::Waiting) alarm_.set(begins_);
  if (!recording()) return;
  scale_ = PendrelScale{epochLength_, parts_.ActivityCalibration};
  alarm_.set(begins_ + lasting((epochs_ + 1) * epochLength_));
}

void PendrelRecorder::arm(const PendrelDelay& delay) {
  stop();
  delay_ = delay;
  epochLength_ = parts_.epochLength();
  parts_.Memory.setPointer(PendrelMemory::Empty);
  state_ = State::Told;
}

void PendrelRecorder::released() {
  if (state_ != State::Told) return;
  const std::int64_t idle = std::int64_t{delay_.Epochs} * epochLength_ - delay_.Seconds;
  wait(timeline_.now() + lasting(idle));
}

void PendrelRecorder::startAt(Moment moment) {
  stop();
  epochLength_ = parts_.epochLength();
  parts_.Memory.setPointer(PendrelMemory::Empty);
  wait(std::max(moment, timeline_.now()));
}

void PendrelRecorder::wait(Moment until) {
  if (epochLength_ < 1) return stop();
  state_ = State::Waiting;
  begins_ = until;
  alarm_.set(until);
}

std::int32_t PendrelRecorder::pointer() const {
  if (!waiting()) return parts_.Memory.pointer();
  const nanoseconds epoch = lasting(epochLength_);
  const std::int64_t left =
      state_ == State::Told ? delay_.Epochs : (begins_ - timeline_.now() + epoch - nanoseconds{1}) / epoch;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(-left, PendrelMemory::Empty, -1));
}

void PendrelRecorder::tick() {
  if (state_ == State::Waiting) {
    state_ = State::Recording;
    scale_ = PendrelScale{epochLength_, parts_.ActivityCalibration};
    epochs_ = 0;
    parts_.Memory.setPointer(0);
  } else {
    writeEpoch();
  }
  if (recording()) alarm_.set(begins_ + lasting((epochs_ + 1) * epochLength_));
}

void PendrelRecorder::writeEpoch() {
  const auto begins = std::chrono::floor<std::chrono::seconds>(begins_ + lasting(epochs_ * epochLength_));
  EpochReading reading;
  if (source_ != nullptr && !docked_) reading = source_->read(begins.count(), epochLength_);
  ++epochs_;
  std::array<std::uint8_t, 3> record{scale_.code(reading.Counts)};
  std::size_t length = 1;
  if (parts_.countsSteps())
    record[length++] = static_cast<std::uint8_t>(std::clamp<std::int32_t>(reading.Steps, 0, MostSteps));
  if (reading.Button1 || reading.Button2) record[length++] = MarkerByte;
  if (!parts_.Memory.append(std::span{record}.first(length))) stop();
}

}  // namespace hy_wristlog::simulator
