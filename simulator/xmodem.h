#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "simulator/fault.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

namespace xmodem {
inline constexpr std::uint8_t Soh = 1, Stx = 2, CtrlC = 3, Eot = 4, Ack = 6, Nak = 21, Can = 24, Pad = 26,
                              CrcMode = 'C';
inline constexpr std::size_t ShortData = 128, LongData = 1024, Overhead = 5;

/// A whole frame around 128 or 1024 bytes of data.
std::vector<std::uint8_t> frame(std::uint8_t number, std::span<const std::uint8_t> data);
}  // namespace xmodem

/// What goes wrong in a transfer. Each fault counts what its comment names.
struct TransferFaults {
  Fault DamagePacket{};           ///< sent packets: a flipped bit, the frame's CRC stays
  Fault LosePacket{};             ///< sent packets: nothing goes out
  Fault TruncatePacket{};         ///< sent packets: only the first half goes out
  Fault MisnumberPacket{};        ///< sent packets: numbered two too high
  Fault DoublePacket{};           ///< sent packets: sent again after the PC has acknowledged it
  Fault CancelPacket{};           ///< sent packets: two CAN instead, and the transfer is over
  Fault NakPacket{};              ///< received packets: refused although they were good
  Fault CancelReceive{};          ///< received packets: answered by two CAN
  Fault LoseAnswer{};             ///< received packets: stored, but the answer is lost
  Fault NakEnd{};                 ///< received EOT: refused
  Fault LoseInvitation{};         ///< the C that asks for the next packet
  bool OnlyShortPackets = false;  ///< a logger that knows no packets of 1024 bytes
};

/// The logger's sending end: waits for the PC's C, then sends packet after packet and waits for each ACK.
class XmodemSender {
 public:
  using Output = std::function<void(std::span<const std::uint8_t>)>;
  /// Called when the transfer is over, with true when the PC has acknowledged its end.
  using Finished = std::function<void(bool)>;

  XmodemSender(Timeline& timeline, TransferFaults& faults, Output output, Finished finished);

  /// The data are cut into packets of 1024 bytes (when `longPackets`) and of 128, the last one padded.
  void start(std::vector<std::uint8_t> data, bool longPackets);
  void receive(std::uint8_t byte);
  void cancel();
  std::uint64_t packetsSent() const { return packetsSent_; }

 private:
  enum class State { Idle, AwaitingC, AwaitingAnswer, AwaitingEndAnswer };

  std::size_t packetLength() const;
  void sendPacket();
  void sendEnd();
  void acknowledged();
  void repeat();
  void timeout();
  void finish(bool complete);

  TransferFaults& faults_;
  Output output_;
  Finished finished_;
  Alarm alarm_;
  State state_ = State::Idle;
  std::vector<std::uint8_t> data_;
  bool longPackets_ = false, sendTwice_ = false;
  std::size_t offset_ = 0;
  std::uint8_t number_ = 1;
  int attempts_ = 0;
  int cancels_ = 0;
  std::uint64_t packetsSent_ = 0;
};

/// The logger's receiving end: asks with C, collects frames of either size and acknowledges the good ones.
class XmodemReceiver {
 public:
  using Output = std::function<void(std::span<const std::uint8_t>)>;
  /// Called with true and all data when the PC has ended the transfer, with false when it was given up. The
  /// callee sends the ACK of the end.
  using Finished = std::function<void(bool, std::vector<std::uint8_t>)>;

  XmodemReceiver(Timeline& timeline, TransferFaults& faults, Output output, Finished finished);

  void start();
  void receive(std::uint8_t byte);
  void cancel();

 private:
  void invite();
  void timeout();
  void frameComplete();
  void answer(std::uint8_t byte);
  void refuse();
  void finish(bool complete);

  TransferFaults& faults_;
  Output output_;
  Finished finished_;
  Alarm alarm_;
  bool active_ = false, invited_ = false;
  std::vector<std::uint8_t> frame_, data_;
  std::uint8_t expected_ = 1;
  int invitations_ = 0, refusals_ = 0, cancels_ = 0;
};

}  // namespace hy_wristlog::simulator
