#include "simulator/line.h"

#include <algorithm>
#include <utility>

#include "simulator/uart.h"

namespace hy_wristlog::simulator {

SimulatedLine::SimulatedLine(Timeline& timeline, const platform::LineSettings& far)
    : timeline_(timeline),
      far_(far),
      toLogger_(timeline, [this] { arrive(Direction::ToLogger); }),
      toPc_(timeline, [this] { arrive(Direction::ToPc); }),
      release_(timeline, [this] {
        for (const std::uint8_t byte : std::exchange(heldBack_, {})) passOn(byte);
      }) {}

void SimulatedLine::discardInput() {
  received_.clear();
  heldBack_.clear();
}

void SimulatedLine::reconnect() {
  cut_ = false;
  Faults.CutAfterToLogger.reset();
  Faults.CutAfterToPc.reset();
  Faults.CutAfterTotal.reset();
}

void SimulatedLine::portOpened() {
  open_ = true;
  pc_ = {};
  discardInput();
  errors_ = {};
  if (cut_ && Faults.CutEndsOnReopen) reconnect();
}

void SimulatedLine::portClosed() {
  open_ = false;
  discardInput();
  discardOutput();
}

void SimulatedLine::discardOutput() {
  toLogger_.Queue.clear();
  toLogger_.Arrival.cancel();
}

std::size_t SimulatedLine::write(std::span<const std::uint8_t> bytes) {
  const std::size_t room = TransmitCapacity - std::min(TransmitCapacity, toLogger_.Queue.size());
  const std::size_t taken = std::min(room, bytes.size());
  const bool resting = toLogger_.Queue.empty();
  for (const std::uint8_t byte : bytes.first(taken)) toLogger_.Queue.push_back({timeline_.now(), byte});
  if (resting && taken > 0) startNext(Direction::ToLogger);
  return taken;
}

std::size_t SimulatedLine::read(std::span<std::uint8_t> into) {
  const std::size_t count = std::min(into.size(), received_.size());
  std::copy_n(received_.begin(), count, into.begin());
  received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(count));
  return count;
}

platform::LineErrors SimulatedLine::takeErrors() { return std::exchange(errors_, {}); }

void SimulatedLine::send(std::span<const std::uint8_t> bytes, nanoseconds delay) {
  const bool resting = toPc_.Queue.empty();
  for (const std::uint8_t byte : bytes) toPc_.Queue.push_back({timeline_.now() + delay, byte});
  if (resting && !bytes.empty()) startNext(Direction::ToPc);
}

void SimulatedLine::dropUnsent() {
  toPc_.Queue.clear();
  toPc_.Arrival.cancel();
}

void SimulatedLine::startNext(Direction direction) {
  Lane& lane = direction == Direction::ToLogger ? toLogger_ : toPc_;
  if (lane.Queue.empty()) return;
  Moment begins = std::max(timeline_.now(), lane.Queue.front().NotBefore);
  if ((direction == Direction::ToLogger ? Faults.DelayToLogger : Faults.DelayToPc).strikes())
    begins += Faults.DelayFor;
  lane.Arrival.set(begins + characterTime(direction == Direction::ToLogger ? pc_ : far_));
}

void SimulatedLine::arrive(Direction direction) {
  Lane& lane = direction == Direction::ToLogger ? toLogger_ : toPc_;
  const std::uint8_t byte = lane.Queue.front().Byte;
  lane.Queue.pop_front();
  startNext(direction);
  applyCuts();
  const bool dead = cut_;
  if (direction == Direction::ToLogger) {
    ++traffic_.BytesToLogger;
    traffic_.BusyToLogger += characterTime(pc_);
  } else {
    ++traffic_.BytesToPc;
    traffic_.BusyToPc += characterTime(far_);
  }
  if (Tap) Tap(direction, byte);
  applyCuts();
  if (!dead) direction == Direction::ToLogger ? deliverToLogger(byte) : deliverToPc(byte);
  actWhenDue();
}

void SimulatedLine::applyCuts() {
  if (Faults.CutAfterToLogger && traffic_.BytesToLogger >= *Faults.CutAfterToLogger) cut_ = true;
  if (Faults.CutAfterToPc && traffic_.BytesToPc >= *Faults.CutAfterToPc) cut_ = true;
  if (Faults.CutAfterTotal && traffic_.total() >= *Faults.CutAfterTotal) cut_ = true;
}

void SimulatedLine::actWhenDue() {
  if (!Faults.ActAfterTotal || traffic_.total() < *Faults.ActAfterTotal) return;
  Faults.ActAfterTotal.reset();
  if (const auto action = std::exchange(Faults.Action, nullptr)) action();
}

void SimulatedLine::deliverToLogger(std::uint8_t byte) {
  if (Faults.LoseToLogger.strikes() || !listener_) return;
  if (Faults.AlterToLogger.strikes()) byte ^= Faults.AlterMask;
  if (Faults.DoubleToLogger.strikes()) hearAtLogger(byte);
  hearAtLogger(byte);
}

void SimulatedLine::hearAtLogger(std::uint8_t byte) {
  if (understandEachOther(pc_, far_)) {
    if (listener_) listener_(byte);
    return;
  }
  for (const HeardCharacter& heard : hear(byte, pc_, far_))
    if (!heard.Framing && !heard.Parity && listener_) listener_(heard.Byte);
}

void SimulatedLine::deliverToPc(std::uint8_t byte) {
  if (!open_ || Faults.LoseToPc.strikes()) return;
  if (Faults.OverrunToPc.strikes()) {
    ++errors_.Overrun;
    return;
  }
  if (Faults.AlterToPc.strikes()) byte ^= Faults.AlterMask;
  if (Faults.DoubleToPc.strikes()) hearAtPc(byte);
  hearAtPc(byte);
}

void SimulatedLine::hearAtPc(std::uint8_t byte) {
  if (understandEachOther(far_, pc_)) {
    receive(byte);
    return;
  }
  for (const HeardCharacter& heard : hear(byte, far_, pc_)) {
    if (heard.Framing) ++errors_.Framing;
    if (heard.Parity) ++errors_.Parity;
    receive(heard.Byte);
  }
}

void SimulatedLine::receive(std::uint8_t byte) {
  if (HoldBack <= nanoseconds{0}) {
    passOn(byte);
    return;
  }
  heldBack_.push_back(byte);
  if (!release_.pending()) release_.setAfter(HoldBack);
}

void SimulatedLine::passOn(std::uint8_t byte) {
  if (received_.size() >= ReceiveCapacity)
    ++errors_.BufferOverflow;
  else
    received_.push_back(byte);
}

}  // namespace hy_wristlog::simulator
