#include <algorithm>
#include <array>
#include <utility>

#include "simulator/checksum.h"
#include "simulator/xmodem.h"

namespace hy_wristlog::simulator {

using namespace std::chrono_literals;

namespace {

constexpr nanoseconds BetweenInvitations = 3s, BetweenBytes = 1s, PatienceForPacket = 15s;
constexpr int MostInvitations = 10, MostRefusals = 10;

bool goodFrame(std::span<const std::uint8_t> frame) {
  if (frame[1] + frame[2] != 255) return false;
  const auto data = frame.subspan(3, frame.size() - xmodem::Overhead);
  return checksum(data) == frame[frame.size() - 2] * 256 + frame[frame.size() - 1];
}

}  // namespace

XmodemReceiver::XmodemReceiver(Timeline& timeline, TransferFaults& faults, Output output, Finished finished)
    : faults_(faults),
      output_(std::move(output)),
      finished_(std::move(finished)),
      alarm_(timeline, [this] { timeout(); }) {}

void XmodemReceiver::start() {
  active_ = true;
  invited_ = false;
  frame_.clear();
  data_.clear();
  expected_ = 1;
  invitations_ = refusals_ = cancels_ = 0;
  invite();
}

void XmodemReceiver::invite() {
  ++invitations_;
  alarm_.setAfter(BetweenInvitations);
  if (!faults_.LoseInvitation.strikes()) output_(std::array{xmodem::CrcMode});
}

void XmodemReceiver::receive(std::uint8_t byte) {
  if (!active_) return;
  if (frame_.empty()) {
    cancels_ = byte == xmodem::Can ? cancels_ + 1 : 0;
    if (cancels_ == 2 || byte == xmodem::CtrlC) {
      finish(false);
      return;
    }
    if (byte == xmodem::Eot && invited_) {
      if (faults_.NakEnd.strikes())
        answer(xmodem::Nak);
      else
        finish(true);
      return;
    }
    if (byte != xmodem::Soh && byte != xmodem::Stx) return;
  }
  frame_.push_back(byte);
  alarm_.setAfter(BetweenBytes);
  if (frame_.size() == xmodem::Overhead + (frame_[0] == xmodem::Stx ? xmodem::LongData : xmodem::ShortData))
    frameComplete();
}

void XmodemReceiver::frameComplete() {
  const std::vector<std::uint8_t> frame = std::exchange(frame_, {});
  const std::uint8_t number = frame[1];
  const bool repeated = invited_ && number == static_cast<std::uint8_t>(expected_ - 1);
  if (!goodFrame(frame) || (number != expected_ && !repeated) || faults_.NakPacket.strikes()) {
    refuse();
    return;
  }
  if (faults_.CancelReceive.strikes()) {
    output_(std::array{xmodem::Can, xmodem::Can});
    finish(false);
    return;
  }
  refusals_ = 0;
  if (!repeated) {
    data_.insert(data_.end(), frame.begin() + 3, frame.end() - 2);
    ++expected_;
    invited_ = true;
  }
  alarm_.setAfter(PatienceForPacket);
  if (!faults_.LoseAnswer.strikes()) answer(xmodem::Ack);
}

void XmodemReceiver::answer(std::uint8_t byte) {
  alarm_.setAfter(PatienceForPacket);
  output_(std::array{byte});
}

void XmodemReceiver::refuse() {
  if (++refusals_ < MostRefusals) {
    answer(xmodem::Nak);
    return;
  }
  output_(std::array{xmodem::Can, xmodem::Can});
  finish(false);
}

void XmodemReceiver::timeout() {
  if (!frame_.empty()) {
    frame_.clear();
    refuse();
  } else if (!invited_ && invitations_ < MostInvitations) {
    invite();
  } else {
    finish(false);
  }
}

void XmodemReceiver::cancel() {
  active_ = false;
  alarm_.cancel();
}

void XmodemReceiver::finish(bool complete) {
  cancel();
  finished_(complete, std::move(data_));
}

}  // namespace hy_wristlog::simulator
