#include <utility>
#include <vector>

#include "base/faults.h"
#include "link/XmodemSession.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int32_t MostInvitations = 5, MostBadPackets = 3, MostDuplicates = 3;
/// Of one packet in all. A refused frame between two of them begins the count of duplicates anew.
constexpr std::int32_t MostRepeats = 32;
constexpr std::size_t FrameOverhead = 5, ShortFrame = Class_Packet::ShortData + FrameOverhead,
                      LongFrame = Class_Packet::LongData + FrameOverhead;

class XmodemReceiver : public XmodemSession {
 public:
  XmodemReceiver(CommState& link, std::int32_t timeout)
      : XmodemSession(link, "fncReceiveXmodemPackets", "Form_Comm.fncReceiveXmodemPackets", timeout) {
    link_.receivedPackets.clear();
  }

  PacketArray run(std::int32_t baudRate, std::int32_t dataBits, std::int32_t parity, std::int32_t stopBits) {
    setLine(link_.transferSettings(procedure(), baudRate, dataBits, parity, stopBits));
    port_.InputLen(0);

    Step step = invite();
    while (step == Step::GoOn) step = receivePacket();
    if (step == Step::Aborted) {
      cancelTwice();
      awaitSilence();
      port_.discardInput();
      link_.owner->AbortAcknowledged();
      return std::nullopt;
    }
    if (link_.receivedPackets.empty()) return std::nullopt;
    return link_.form.takeReceivedPackets();
  }

 private:
  enum class Arrival : std::uint8_t { Frame, End, Bad, Aborted };

  Step invite() {
    if (abortRequested()) return Step::Aborted;
    for (std::int32_t attempts = 1;; ++attempts) {
      port_.Output({&xmodem::WantCrc, 1});
      link_.showHex({&xmodem::WantCrc, 1});
      const double deadline = link_.deadline(timeout_);
      for (bool late = false; !late;) {
        link_.turn(PollInterval, deadline);
        if (abortRequested()) return Step::Aborted;
        late = link_.timer() > deadline;
        if (port_.InBufferCount() >= 1) return Step::GoOn;
      }
      if (attempts >= MostInvitations) return giveUp(NoPacket, "No packet received, retries exceeded");
      link_.tellLost(attempts, MostInvitations - 1, -1);
    }
  }

  Step receivePacket() {
    switch (collectFrame()) {
      case Arrival::Aborted:
        return Step::Aborted;
      case Arrival::Bad:
        return refuse();
      case Arrival::End:
        procedure().statement([&] { link_.form.subSendXmodemACK(); });
        return Step::Done;
      case Arrival::Frame:
        break;
    }
    const auto number = static_cast<std::uint8_t>(bytes_[1]);
    const Step step = checkNumber(number);
    if (step != Step::GoOn) return step;
    procedure().statement([&] { packet_.Let_Packet(asBytes(bytes_)); });
    if (!packet_.Get_IsValidPacket()) return refuse();
    return accept(number);
  }

  Arrival collectFrame() {
    double deadline = link_.deadline(timeout_);
    std::size_t waiting = 0;
    for (bool late = false; waiting == 0 && !late;) {
      link_.turn(PollInterval, deadline);
      late = link_.timer() > deadline;
      waiting = port_.InBufferCount();
      if (waiting == 0 && abortRequested()) return Arrival::Aborted;
    }
    bytes_.clear();
    if (waiting == 0 || readMore() == 0) return Arrival::Bad;

    if (bytes_.front() == xmodem::Eot) return Arrival::End;
    if (bytes_.front() != xmodem::Soh && bytes_.front() != xmodem::Stx) return Arrival::Bad;
    const std::size_t expected = bytes_.front() == xmodem::Stx ? LongFrame : ShortFrame;
    bool bad = bytes_.size() > expected;

    deadline = link_.deadline(timeout_);
    while (!bad && bytes_.size() < expected) {
      const bool late = link_.timer() > deadline;
      if (port_.InBufferCount() >= 1) readMore();
      if (late && bytes_.size() < expected) break;
      bad = bytes_.size() > expected;
      const bool complete = bad || bytes_.size() == expected;
      if (complete && link_.wakesOnInput())
        link_.world->serveEvents();
      else
        link_.turn(PollInterval, deadline, expected - std::min(bytes_.size(), expected));
      if (link_.lastCOMerrorNum == comm_event::Overrun) {
        link_.lastCOMerrorNum = 0;
        bad = true;
      }
    }
    if (abortRequested()) return Arrival::Aborted;
    return bad || bytes_.size() != expected ? Arrival::Bad : Arrival::Frame;
  }

  std::size_t readMore() {
    const std::string read = port_.Input();
    link_.showHex(read);
    bytes_ += read;
    return read.size();
  }

  /// Recognises a packet that came again, which is kept a second time. Any other number is accepted as it is.
  Step checkNumber(std::uint8_t number) {
    if (number != expected_ && number == numberBefore()) {
      if (duplicates_ > MostDuplicates || repeats_ == MostRepeats)
        return giveUp(RetriesExceeded, RetriesExceededText);
      ++repeats_;
      ++duplicates_;
      --expected_;
      link_.tellLost(duplicates_, MostDuplicates, expected_ - 1);
      return Step::GoOn;
    }
    duplicates_ = 1;
    repeats_ = 0;
    return Step::GoOn;
  }

  /// The number before the expected one, in a byte. At 0 this raises Overflow: after packet 255 only packet 0
  /// is accepted. The caller may begin the transfer anew.
  std::uint8_t numberBefore() {
    return procedure().statement([&] { return fault::narrow<std::uint8_t>(expected_ - 1); });
  }

  Step accept(std::uint8_t number) {
    if (link_.consoleInUse())
      link_.form.subShowCOM(procedure().statement([&] { return packet_.Get_FriendlyPacketText(); }));
    if (number == expected_)
      bytesSoFar_ =
          fault::narrow<std::int32_t>(bytesSoFar_ + static_cast<std::int64_t>(bytes_.size() - FrameOverhead));
    storedBytes_ += packet_.BinData.size();
    if (storedBytes_ > link_.mostTransferBytes)
      return giveUp(RetriesExceeded, "More data than a logger can hold");
    link_.receivedPackets.push_back(std::exchange(packet_, {}));
    procedure().statement([&] { link_.form.subSendXmodemACK(); });
    link_.owner->XmodemPacketReceived(expected_, bytesSoFar_);
    errors_ = 1;
    ++expected_;
    return Step::GoOn;
  }

  Step refuse() {
    if (abortRequested()) return Step::Aborted;
    if (++errors_ > MostBadPackets) return giveUp(RetriesExceeded, RetriesExceededText);
    awaitSilence();
    if (link_.consoleInUse() && port_.InBufferCount() >= 1) link_.showHex(port_.Input());
    port_.discardInput();
    procedure().statement([&] { link_.form.subSendXmodemNAK(); });
    duplicates_ = 1;
    link_.tellLost(errors_, MostBadPackets, expected_);
    return Step::GoOn;
  }

  Class_Packet packet_;
  std::string bytes_;
  std::uint8_t expected_ = 1;
  std::int32_t duplicates_ = 0, repeats_ = 0;
  /// Errors of the present packet. Starts at 0 but is reset to 1, so the first packet may be bad three times
  /// and later ones twice.
  std::int32_t errors_ = 0;
  std::int32_t bytesSoFar_ = 0;
  std::size_t storedBytes_ = 0;
};

}  // namespace

void Form_Comm::boundTransfers(std::size_t bytes) { state_->mostTransferBytes = bytes; }

std::vector<Class_Packet> Form_Comm::takeReceivedPackets() {
  return std::exchange(state_->receivedPackets, {});
}

PacketArray Form_Comm::fncReceiveXmodemPackets(std::int32_t vBaudRate, std::int32_t vDataBits,
                                               std::int32_t vParity, std::int32_t vStopBits,
                                               std::int32_t CmdTimeout) {
  XmodemReceiver receiver{*state_, CmdTimeout};
  receiver.procedure().passesOn(InvalidSettings, RetriesExceeded, NoPacket, fault::Overflow);
  return receiver.procedure().run([&] { return receiver.run(vBaudRate, vDataBits, vParity, vStopBits); });
}

}  // namespace hy_wristlog
