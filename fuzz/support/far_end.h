#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/quiet_world.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {

/// The far end of the serial line, a logger that does what a script says. Its lines:
///   on TEXT              what follows is sent when the text has been heard
///   say TEXT             sends the text; `value TEXT` with a CRC and a prompt, `summed TEXT` with the sum
///                        of its characters and a prompt; `sum TEXT` sends the sum alone
///   block SEED SPOIL     a block of a Pendrel's memory with its sum, which SPOIL changes
///   late MS              what follows in this answer comes so much later
///   payload COUNT SEED   bytes to be sent; also `config MODE SEED`, a config block, and
///                        `stream EPOCHS SEED`, a recording
///   send SIZE            sends the payload in packets of 128 (1) or 1024 (2) bytes, each when the one before
///                        has been acknowledged, and the end of the transmission
///   packet STEP SIZE SEED SPOIL  one packet; the steps lead from number to number, SPOIL changes its CRC
///   take COUNT           acknowledges so many packets of 128 bytes and the end of the transmission
///   hex BYTES            bytes as they are
///   mute                 typed characters have no echo from here on
///   error KIND           the port tells a line error with what follows
///   gone COUNT           the port is unplugged at its so many-th operation
class FarEnd {
 public:
  FarEnd(const QuietWorld& world, const std::vector<Line>& script);
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;
  ~FarEnd() { world_->OnWrite = nullptr, world_->Before = nullptr; }

  /// Whether the bytes are data of packets that were sent with the right CRC, one after the other.
  bool hasSent(const std::vector<std::uint8_t>& data, std::size_t packetBytes) const;
  std::size_t packets() const { return packets_.size(); }

 private:
  struct Piece {
    std::string Text;
    std::int64_t Delay = 0;
    bool IsPacket = false;
    std::int64_t Error = 0;
  };
  /// An answer and what it waits for: a text, or so many bytes.
  struct Step {
    std::string On;
    std::size_t Bytes = 0;
    bool Echo = true;
    std::vector<Piece> Answer{};
  };

  void read(const Line& line);
  void begin(std::string on, std::size_t bytes, bool echo);
  void add(std::string text, bool isPacket = false);
  void packet(std::vector<std::uint8_t> data, std::uint8_t number, std::size_t size, std::uint16_t spoil);
  void hear(char byte);
  void answer();

  const QuietWorld& world_;
  std::deque<Step> steps_{1};
  std::set<std::vector<std::uint8_t>> packets_;
  std::vector<std::uint8_t> payload_;
  std::string heard_, lastPacket_;
  std::size_t count_ = 0, written_ = 0;
  std::int64_t late_ = 0, error_ = 0, operations_ = 0;
  std::uint8_t number_ = 0;
  bool echo_ = true;
};

/// A script and the world in which the far end does what it says. Its lines "call NAME" are the target's own.
struct Conversation {
  static constexpr std::size_t MostCalls = 12;

  explicit Conversation(std::string_view text) : script(linesOf(text)), farEnd(world, script) {}

  /// The failure of a call, which must not last for an hour of simulated time. The far end may send its
  /// packets as late as the receiver's patience with each of them allows.
  template <class Call>
  std::int32_t failureOfCall(Call&& call) const {
    constexpr std::int64_t LongestCall = 3600000, Patience = 15000;
    const std::int64_t before = world->Now;
    const std::int32_t failure = world.failureOf(call);
    if (world->Now - before > LongestCall + Patience * packetsInScript())
      finding("a call takes " + std::to_string(world->Now - before) + " ms");
    return failure;
  }

  std::int64_t packetsInScript() const {
    return std::count_if(script.begin(), script.end(), [](const Line& line) { return line.is("packet"); });
  }

  QuietWorld world;
  std::vector<Line> script;
  FarEnd farEnd;
};

}  // namespace hy_wristlog::fuzz
