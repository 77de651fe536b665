#include <algorithm>
#include <optional>
#include <vector>

#include "link/XmodemSession.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int32_t MostAttempts = 3, PauseBeforePacket = 500;
constexpr std::size_t MostPackets = 255;

class XmodemSender : public XmodemSession {
 public:
  XmodemSender(CommState& link, const PacketArray& packets, std::int32_t timeout, bool byteByByte,
               std::int32_t byteDelay)
      : XmodemSession(link, "subSendXmodemPackets", "Form_Comm.subSendXmodemPackets", timeout),
        packets_(packets),
        byteByByte_(byteByByte),
        byteDelay_(byteDelay < 0 ? 1 : byteDelay) {}

  void run(std::int32_t baudRate, std::int32_t dataBits, std::int32_t parity, std::int32_t stopBits) {
    link_.progress("Starting Packet Send Routine");
    const std::string settings = link_.transferSettings(procedure(), baudRate, dataBits, parity, stopBits);
    if (!packets_ || packets_->empty() || packets_->size() > MostPackets) {
      failWith(InvalidPacketArray, "Invalid packet array input");
      return;
    }
    setLine(settings);
    link_.progress("COM settings changed to: " + settings);
    port_.InputLen(1);

    if (transfer() != Step::Aborted) return;
    cancelTwice();
    awaitSilence();
    link_.owner->AbortAcknowledged();
  }

 private:
  struct Answer {
    bool Aborted = false;
    std::optional<char> Byte;
  };

  Step transfer() {
    if (abortRequested()) return Step::Aborted;
    Step step = awaitStart();
    for (std::size_t index = 0; step == Step::GoOn && index < packets_->size();) {
      step = sendPacket(index);
      if (step == Step::Done) {
        ++index;
        link_.owner->XModemPacketSent(static_cast<std::uint8_t>(index),
                                      static_cast<std::uint8_t>(packets_->size()));
        attempts_ = 1;
        step = Step::GoOn;
      }
    }
    if (step != Step::GoOn) return step;
    link_.progress("Packets sent, sending EOT");
    attempts_ = 1;
    while (step == Step::GoOn) step = sendEnd();
    return step;
  }

  Step awaitStart() {
    link_.progress("Waiting for starting 'C'...");
    const Answer answer = awaitAnswer([](char byte) { return byte == xmodem::WantCrc; }, "");
    if (answer.Aborted) return Step::Aborted;
    if (answer.Byte != xmodem::WantCrc) {
      link_.progress("Unexpected response, aborting...");
      return giveUp(NoInitiation, "Failure to receive initiation character");
    }
    link_.progress("Got Starting 'C'");
    link_.flush(port_);
    return Step::GoOn;
  }

  /// Done when the packet was acknowledged, GoOn when it is to be sent again.
  Step sendPacket(std::size_t index) {
    Tools().subDelay(PauseBeforePacket, PollInterval);
    if (abortRequested()) return Step::Aborted;
    Class_Packet packet = (*packets_)[index];
    const auto image = procedure().statement([&] { return packet.Get_Packet(); });
    if (link_.consoleInUse())
      link_.form.subShowCOM(procedure().statement([&] { return packet.Get_FriendlyPacketText(); }));

    const std::string number = std::to_string(index + 1);
    Step step = Step::GoOn;
    if (byteByByte_) {
      link_.progress("Sending Packet " + number + " out one byte at a time...waiting for response");
      step = sendByteByByte(asText(image));
    } else {
      const double deadline = link_.deadline(timeout_);
      port_.Output(asText(image));
      link_.progress("Packet " + number + " sent...waiting for response");
      step = awaitSent(deadline);
    }
    if (step != Step::GoOn) return step;

    // A receiver that did not get the first packet may ask for CRC mode once more.
    const bool first = index == 0;
    const Answer answer = awaitAnswer(
        [&](char byte) {
          return byte == xmodem::Ack || byte == xmodem::Nak || (first && byte == xmodem::WantCrc);
        },
        "\r\n");
    if (answer.Aborted) return Step::Aborted;
    if (answer.Byte == xmodem::Ack) {
      link_.progress("ACK received");
      return Step::Done;
    }
    const auto which = static_cast<std::int32_t>(index);
    if (answer.Byte == xmodem::Nak) return sendAgain("NAK received", which);
    if (first && answer.Byte == xmodem::WantCrc) return sendAgain("'C'/NAK received", which);
    cancelTwice();
    link_.progress("No response, aborting...");
    return failWith(NoAcknowledgement, "Failure to receive packet acknowledgement");
  }

  /// Where waits end with their input, an abort is heard after the packet: in the middle of one the logger
  /// would take the cancelling for data, and refuse the packet only a second later.
  Step sendByteByByte(std::string_view image) {
    for (const char& byte : image) {
      if (byteDelay_ > 0) link_.pause(byteDelay_);
      const double deadline = link_.deadline(timeout_);
      port_.Output({&byte, 1});
      const Step step = awaitSent(deadline);
      if (step != Step::GoOn) return step;
      if (abortRequested() && !link_.wakesOnInput()) return Step::Aborted;
    }
    return Step::GoOn;
  }

  Step awaitSent(double deadline) {
    for (;;) {
      const bool late = link_.timer() >= deadline;
      link_.world->serveEvents();
      if (port_.OutBufferCount() == 0) return Step::GoOn;
      if (late) return failWith(TransmitTooSlow, "Packet took too long to transmit");
      link_.world->clock().idle();
    }
  }

  Step sendEnd() {
    if (abortRequested()) return Step::Aborted;
    port_.Output({&xmodem::Eot, 1});
    link_.showHex({&xmodem::Eot, 1});
    link_.progress("EOT sent...waiting for response");
    const Answer answer =
        awaitAnswer([](char byte) { return byte == xmodem::Ack || byte == xmodem::Nak; }, "\r\n");
    if (answer.Aborted) return Step::Aborted;
    if (answer.Byte == xmodem::Ack) {
      link_.progress("ACK received");
      link_.progress("End Packet Send Routine");
      return Step::Done;
    }
    if (answer.Byte == xmodem::Nak) return sendAgain("NAK received", -1);
    cancelTwice();
    link_.progress("No response, aborting...");
    return failWith(NoEndAcknowledgement, "Failure to receive acknowledgement of end of transmission");
  }

  /// Reads until a byte that `final` accepts or until the time is up, and returns the last byte. What waits
  /// at the end of the time is still read.
  template <class Final>
  Answer awaitAnswer(Final final, std::string_view lineEnd) {
    Answer answer;
    const double deadline = link_.deadline(timeout_);
    const auto known = [&] { return answer.Byte && final(*answer.Byte); };
    for (bool late = false; !answer.Aborted && !late && !known();) {
      late = link_.timer() > deadline;
      std::size_t waiting = port_.InBufferCount();
      if (!late) waiting = std::min<std::size_t>(waiting, 1);
      for (; waiting > 0 && !known(); --waiting) {
        const std::string read = port_.Input();
        if (!read.empty()) answer.Byte = read.front();
        link_.showHex(read, lineEnd);
      }
      if (!late && !(link_.wakesOnInput() && known())) link_.turn(PollInterval, deadline);
      answer.Aborted = abortRequested();
    }
    return answer;
  }

  Step sendAgain(const char* reason, std::int32_t which) {
    link_.progress(reason);
    if (attempts_ >= MostAttempts) return giveUp(RetriesExceeded, RetriesExceededText);
    ++attempts_;
    link_.tellLost(attempts_, MostAttempts, which);
    return Step::GoOn;
  }

  const PacketArray& packets_;
  const bool byteByByte_;
  const std::int32_t byteDelay_;
  std::int32_t attempts_ = 1;
};

}  // namespace

void Form_Comm::subSendXmodemPackets(const PacketArray& Packets, std::int32_t vBaudRate,
                                     std::int32_t vDataBits, std::int32_t vParity, std::int32_t vStopBits,
                                     std::int32_t CmdTimeout, bool ByteByByte, std::int32_t ByteByByteDelay) {
  XmodemSender sender{*state_, Packets, CmdTimeout, ByteByByte, ByteByByteDelay};
  sender.procedure().passesOn(InvalidSettings, InvalidPacketArray, NoInitiation, TransmitTooSlow,
                              NoAcknowledgement, RetriesExceeded, NoEndAcknowledgement);
  sender.procedure().run([&] { sender.run(vBaudRate, vDataBits, vParity, vStopBits); });
}

}  // namespace hy_wristlog
