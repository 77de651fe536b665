#include "link/SerialControl.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "base/faults.h"
#include "hy_wristlog/failure.h"
#include "link/line_settings.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

[[noreturn]] void raise(std::int32_t number, const char* description) {
  throw Failure(number, "MSComm", description);
}

[[noreturn]] void raiseClosed() { raise(PortClosed, "The serial port is not open"); }
[[noreturn]] void raiseOpen(std::int32_t number) { raise(number, "The serial port is already open"); }

platform::LineSettings lineSettings(std::string_view text) {
  const auto settings = parseLineSettings(text);
  if (!settings) raise(InvalidPortSettings, "Invalid serial port settings");
  return *settings;
}

}  // namespace

void SerialControl::CommPort(std::int16_t number) {
  if (port_) raiseOpen(FailureNumber::PortOpen);
  commPort_ = number;
}

void SerialControl::PortOpen(bool open) {
  if (open == PortOpen()) {
    if (open) raiseOpen(PortNotAvailable);
    raiseClosed();
  }
  if (open) return this->open();
  port_.reset();
  received_.clear();
  taken_ = 0;
  unsent_.clear();
  arrived_ = overflowed_ = false;
}

void SerialControl::open() {
  auto port = ports_.open(commPort_);
  port->configure(lineSettings(settings_));
  port->setRts(rts_);
  port->setDtr(dtr_);
  lines_ = port->modemLines();
  port->takeErrors();
  port_ = std::move(port);
}

void SerialControl::Settings(std::string_view text) {
  const auto settings = lineSettings(text);
  if (port_) port_->configure(settings);
  settings_ = text;
}

void SerialControl::Handshaking(std::int32_t mode) const {
  if (mode != 0) fault::raise(fault::InvalidCall);
}

void SerialControl::DTREnable(bool on) {
  if (port_) port_->setDtr(on);
  dtr_ = on;
}

void SerialControl::RTSEnable(bool on) {
  if (port_) port_->setRts(on);
  rts_ = on;
}

bool SerialControl::DSRHolding() { return port_ && port_->modemLines().Dsr; }

void SerialControl::InputLen(std::int32_t length) {
  if (length < 0) fault::raise(fault::InvalidCall);
  inputLen_ = length;
}

void SerialControl::InBufferSize(std::size_t size) {
  if (port_) raiseOpen(FailureNumber::PortOpen);
  inBufferSize_ = size;
}

std::size_t SerialControl::InBufferCount() {
  pump();
  return received();
}

void SerialControl::discardInput() {
  if (!port_) return;
  pump();
  port_->discardInput();
  received_.clear();
  taken_ = 0;
  arrived_ = false;
}

std::string SerialControl::Input() {
  if (!port_) raiseClosed();
  pump();
  const std::size_t waiting = received();
  const std::size_t count = inputLen_ == 0 ? waiting : std::min(waiting, static_cast<std::size_t>(inputLen_));
  std::string bytes = received_.substr(taken_, count);
  taken_ += count;
  if (taken_ == received_.size()) {
    received_.clear();
    taken_ = 0;
  }
  return bytes;
}

void SerialControl::awaitInput(std::chrono::microseconds longest) {
  if (port_) port_->awaitInput(longest);
}

std::size_t SerialControl::OutBufferCount() {
  pump();
  return port_ ? unsent_.size() + port_->outstanding() : 0;
}

void SerialControl::Output(std::string_view bytes) {
  if (!port_) raiseClosed();
  unsent_ += bytes;
  pump();
}

void SerialControl::pump() {
  if (!port_) return;
  while (!unsent_.empty()) {
    const std::size_t sent =
        port_->write({reinterpret_cast<const std::uint8_t*>(unsent_.data()), unsent_.size()});
    if (sent == 0) break;
    unsent_.erase(0, sent);
  }
  receive();
}

/// Takes at most one buffer's worth, so that a peer that never stops cannot hold the caller here.
void SerialControl::receive() {
  std::array<std::uint8_t, 4096> chunk;
  for (std::size_t total = 0; total <= inBufferSize_;) {
    const std::size_t count = port_->read(chunk);
    if (count == 0) return;
    total += count;
    arrived_ = true;
    const std::size_t room = inBufferSize_ - std::min(inBufferSize_, received());
    if (count > room) overflowed_ = true;
    if (taken_ > inBufferSize_) {
      received_.erase(0, taken_);
      taken_ = 0;
    }
    received_.append(reinterpret_cast<const char*>(chunk.data()), std::min(count, room));
  }
}

/// Lost data comes last, since those who wait see only the last event.
void SerialControl::deliverEvents() {
  if (!port_) return;
  std::vector<std::int32_t> events;
  const auto add = [&](bool happened, std::int32_t event) {
    if (happened) events.push_back(event);
  };
  try {
    pump();
    const platform::ModemLines lines = port_->modemLines();
    add(lines.Cts != lines_.Cts, comm_event::Cts);
    add(lines.Dsr != lines_.Dsr, comm_event::Dsr);
    add(lines.Cd != lines_.Cd, comm_event::Cd);
    add(lines.Ring != lines_.Ring, comm_event::Ring);
    lines_ = lines;
    add(arrived_ && rThreshold_ > 0 && std::cmp_greater_equal(received(), rThreshold_), comm_event::Receive);
    arrived_ = false;
    const platform::LineErrors errors = port_->takeErrors();
    add(errors.Break > 0, comm_event::Break);
    add(errors.Framing > 0, comm_event::Framing);
    add(errors.Parity > 0, comm_event::Parity);
    add(errors.BufferOverflow > 0 || overflowed_, comm_event::ReceiveOverflow);
    overflowed_ = false;
    add(errors.Overrun > 0, comm_event::Overrun);
  } catch (const Failure&) {
    events.clear();
  }
  for (const std::int32_t event : events) {
    commEvent_ = event;
    if (OnComm) OnComm();
  }
}

}  // namespace hy_wristlog
