// The bytes of a telnet connection, and the messages about a serial port in them.
#include "platform/telnet.h"

#include <algorithm>
#include <utility>

#include "platform/com_port_option.h"
#include "support/fuzz.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {
namespace {

namespace telnet = platform::telnet;
namespace com_port = platform::com_port;
using telnet::Bytes;

constexpr std::string_view Lines[] = {"text #",
                                      "text \\xFF\\xFF",
                                      "text \\xFF\\xF0",
                                      "text \\xFF\\xFA\\x2C",
                                      "bytes FFFD00FFFB2C",
                                      "bytes FFFA2C6B30FFF0",
                                      "bytes FFFA2C650000E100FFF0",
                                      "negotiation # #",
                                      "sub 010000E100",
                                      "long #"};

/// What a parser tells, written as telnet again; pieces of data stand together.
class Notes final : public telnet::Listener {
 public:
  Bytes Written;
  std::int64_t Messages = 0;
  telnet::Options Agreed;
  Bytes Answers;

  void data(std::span<const std::uint8_t> bytes) override { telnet::addData(Written, bytes); }
  void command(std::uint8_t code) override { telnet::addCommand(Written, code); }
  void negotiation(std::uint8_t verb, std::uint8_t option) override {
    telnet::addNegotiation(Written, verb, option);
    Agreed.take(Answers, verb, option);
  }
  void subnegotiation(std::uint8_t option, std::span<const std::uint8_t> content) override {
    require(content.size() <= telnet::LongestSubnegotiation, "a subnegotiation too long");
    telnet::addSubnegotiation(Written, option, content);
    if (option == telnet::ComPort) note(com_port::messageOf(content));
  }

 private:
  void note(const std::optional<com_port::Message>& message) {
    if (!message) return;
    ++Messages;
    Bytes again;
    if (const auto byte = message->byte())
      com_port::addByteMessage(again, message->Number, *byte);
    else if (const auto number = message->number())
      com_port::addNumberMessage(again, message->Number, *number);
    else
      return;
    require(std::equal(again.rbegin(), again.rend(), Written.rbegin()), "a message differs when written");
  }
};

Bytes bytesOf(std::string_view script) {
  Bytes bytes;
  for (const Line& line : linesOf(script)) {
    if (line.is("text"))
      for (const char c : line.text()) bytes.push_back(static_cast<std::uint8_t>(c));
    else if (line.is("bytes"))
      for (const std::uint8_t byte : line.bytes()) bytes.push_back(byte);
    else if (line.is("negotiation"))
      telnet::addNegotiation(bytes, static_cast<std::uint8_t>(line.number(1, telnet::Will, telnet::Dont)),
                             static_cast<std::uint8_t>(line.number(2, 0, 255)));
    else if (line.is("sub"))
      telnet::addSubnegotiation(bytes, telnet::ComPort, line.bytes());
    else if (line.is("long"))
      bytes.insert(bytes.end(), static_cast<std::size_t>(line.number(1, 0, 2000)), 'x');
  }
  return bytes;
}

void allowSome(telnet::Options& options) {
  for (const std::uint8_t option : {telnet::Binary, telnet::ComPort}) {
    options.allowHere(option);
    options.allowThere(option);
  }
}

/// Lets two ends answer each other until both are silent.
void requireAnEnd(Notes& near) {
  Notes far;
  allowSome(far.Agreed);
  for (int round = 0; !near.Answers.empty() || !far.Answers.empty(); ++round) {
    require(round < 4, "two ends answer each other without an end");
    const Bytes toFar = std::exchange(near.Answers, {}), toNear = std::exchange(far.Answers, {});
    telnet::Parser().take(toFar, far);
    telnet::Parser().take(toNear, near);
  }
}

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view script) {
  const Bytes bytes = bytesOf(script);
  Notes whole, pieces, again;
  allowSome(whole.Agreed);
  telnet::Parser().take(bytes, whole);
  telnet::Parser slow;
  for (const std::uint8_t byte : bytes) slow.take(std::span(&byte, 1), pieces);
  require(pieces.Written == whole.Written, "the pieces change what is told");
  telnet::Parser().take(whole.Written, again);
  require(again.Written == whole.Written, "what is written is told in another way");
  requireAnEnd(whole);
  reached("messages about a port", whole.Messages);
}

}  // namespace hy_wristlog::fuzz
