#include <algorithm>
#include <array>
#include <utility>

#include "simulator/checksum.h"
#include "simulator/xmodem.h"

namespace hy_wristlog::simulator {

using namespace std::chrono_literals;

namespace xmodem {

std::vector<std::uint8_t> frame(std::uint8_t number, std::span<const std::uint8_t> data) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(data.size() + 5);
  for (const auto byte :
       {data.size() == LongData ? Stx : Soh, number, static_cast<std::uint8_t>(255 - number)})
    bytes.push_back(byte);
  bytes.insert(bytes.end(), data.begin(), data.end());
  const std::uint16_t crc = checksum(data);
  bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
  bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
  return bytes;
}

}  // namespace xmodem

namespace {

constexpr nanoseconds PatienceForC = 20s, PatienceForAnswer = 10s;
constexpr int MostAttempts = 10;
constexpr std::array<std::uint8_t, 2> CancelBytes{xmodem::Can, xmodem::Can};

}  // namespace

XmodemSender::XmodemSender(Timeline& timeline, TransferFaults& faults, Output output, Finished finished)
    : faults_(faults),
      output_(std::move(output)),
      finished_(std::move(finished)),
      alarm_(timeline, [this] { timeout(); }) {}

void XmodemSender::start(std::vector<std::uint8_t> data, bool longPackets) {
  data_ = std::move(data);
  longPackets_ = longPackets && !faults_.OnlyShortPackets;
  sendTwice_ = false;
  offset_ = 0;
  number_ = 1;
  attempts_ = cancels_ = 0;
  state_ = State::AwaitingC;
  alarm_.setAfter(PatienceForC);
}

std::size_t XmodemSender::packetLength() const {
  return longPackets_ && data_.size() - offset_ >= xmodem::LongData ? xmodem::LongData : xmodem::ShortData;
}

void XmodemSender::receive(std::uint8_t byte) {
  if (state_ == State::Idle) return;
  cancels_ = byte == xmodem::Can ? cancels_ + 1 : 0;
  if (cancels_ == 2 || byte == xmodem::CtrlC) {
    finish(false);
    return;
  }
  const bool first = state_ == State::AwaitingAnswer && offset_ == 0;
  if (state_ == State::AwaitingC) {
    if (byte == xmodem::CrcMode) sendPacket();
  } else if (byte == xmodem::Ack) {
    acknowledged();
  } else if (byte == xmodem::Nak || (first && byte == xmodem::CrcMode)) {
    repeat();
  }
}

void XmodemSender::sendPacket() {
  if (offset_ >= data_.size()) {
    sendEnd();
    return;
  }
  state_ = State::AwaitingAnswer;
  alarm_.setAfter(PatienceForAnswer);
  if (faults_.CancelPacket.strikes()) {
    output_(CancelBytes);
    finish(false);
    return;
  }
  std::vector<std::uint8_t> data(packetLength(), xmodem::Pad);
  std::copy_n(data_.begin() + static_cast<std::ptrdiff_t>(offset_),
              std::min(data.size(), data_.size() - offset_), data.begin());
  const int ahead = faults_.MisnumberPacket.strikes() ? 2 : 0;
  std::vector<std::uint8_t> bytes = xmodem::frame(static_cast<std::uint8_t>(number_ + ahead), data);
  if (faults_.DamagePacket.strikes()) bytes[bytes.size() / 2] ^= 0x20;
  if (faults_.TruncatePacket.strikes()) bytes.resize(bytes.size() / 2);
  if (!sendTwice_) sendTwice_ = faults_.DoublePacket.strikes();
  ++packetsSent_;
  if (!faults_.LosePacket.strikes()) output_(bytes);
}

void XmodemSender::sendEnd() {
  state_ = State::AwaitingEndAnswer;
  alarm_.setAfter(PatienceForAnswer);
  output_(std::array{xmodem::Eot});
}

void XmodemSender::acknowledged() {
  attempts_ = 0;
  if (state_ == State::AwaitingEndAnswer) {
    finish(true);
    return;
  }
  if (std::exchange(sendTwice_, false)) {
    const Fault doubling = std::exchange(faults_.DoublePacket, {});
    sendPacket();
    faults_.DoublePacket = doubling;
    return;
  }
  offset_ = std::min(offset_ + packetLength(), data_.size());
  ++number_;
  sendPacket();
}

void XmodemSender::repeat() {
  if (++attempts_ >= MostAttempts) {
    output_(CancelBytes);
    finish(false);
  } else if (state_ == State::AwaitingEndAnswer) {
    sendEnd();
  } else {
    sendPacket();
  }
}

void XmodemSender::timeout() {
  if (state_ == State::AwaitingC)
    finish(false);
  else
    repeat();
}

void XmodemSender::cancel() {
  state_ = State::Idle;
  alarm_.cancel();
}

void XmodemSender::finish(bool complete) {
  cancel();
  finished_(complete);
}

}  // namespace hy_wristlog::simulator
