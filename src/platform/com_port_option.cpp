#include "platform/com_port_option.h"

#include <algorithm>

namespace hy_wristlog::platform::com_port {
namespace {

template <class Value>
struct Code {
  Value Means;
  std::uint8_t Number;
};

constexpr std::array<Code<LineParity>, 5> Parities{{{LineParity::None, NoParity},
                                                    {LineParity::Odd, OddParity},
                                                    {LineParity::Even, EvenParity},
                                                    {LineParity::Mark, MarkParity},
                                                    {LineParity::Space, SpaceParity}}};
constexpr std::array<Code<LineStopBits>, 3> StopBits{{{LineStopBits::One, OneStopBit},
                                                      {LineStopBits::Two, TwoStopBits},
                                                      {LineStopBits::OneAndHalf, OneAndHalfStopBits}}};

template <class Value, std::size_t Count>
std::uint8_t codeIn(const std::array<Code<Value>, Count>& codes, Value value) {
  const auto found =
      std::find_if(codes.begin(), codes.end(), [&](const Code<Value>& code) { return code.Means == value; });
  return found != codes.end() ? found->Number : AskValue;
}

template <class Value, std::size_t Count>
std::optional<Value> valueIn(const std::array<Code<Value>, Count>& codes, std::uint8_t number) {
  const auto found = std::find_if(codes.begin(), codes.end(),
                                  [&](const Code<Value>& code) { return code.Number == number; });
  if (found == codes.end()) return std::nullopt;
  return found->Means;
}

}  // namespace

std::optional<std::uint8_t> Message::byte() const {
  if (Value.size() != 1) return std::nullopt;
  return Value[0];
}

std::optional<std::uint32_t> Message::number() const {
  if (Value.size() != 4) return std::nullopt;
  std::uint32_t number = 0;
  for (const std::uint8_t byte : Value) number = number << 8 | byte;
  return number;
}

std::optional<Message> messageOf(std::span<const std::uint8_t> content) {
  if (content.empty()) return std::nullopt;
  return Message{content[0], content.subspan(1)};
}

void addMessage(telnet::Bytes& out, std::uint8_t number, std::span<const std::uint8_t> value) {
  telnet::Bytes content{number};
  content.insert(content.end(), value.begin(), value.end());
  telnet::addSubnegotiation(out, telnet::ComPort, content);
}

void addByteMessage(telnet::Bytes& out, std::uint8_t number, std::uint8_t value) {
  addMessage(out, number, std::span(&value, 1));
}

void addNumberMessage(telnet::Bytes& out, std::uint8_t number, std::uint32_t value) {
  std::array<std::uint8_t, 4> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::uint8_t>(value >> 8 * (bytes.size() - 1 - i));
  addMessage(out, number, bytes);
}

std::uint8_t codeOf(LineParity parity) { return codeIn(Parities, parity); }

std::uint8_t codeOf(LineStopBits stopBits) { return codeIn(StopBits, stopBits); }

std::optional<LineParity> parityOf(std::uint8_t code) { return valueIn(Parities, code); }

std::optional<LineStopBits> stopBitsOf(std::uint8_t code) { return valueIn(StopBits, code); }

ModemLines linesOf(std::uint8_t modemState) {
  return {(modemState & ModemCts) != 0, (modemState & ModemDsr) != 0, (modemState & ModemCd) != 0,
          (modemState & ModemRing) != 0};
}

std::uint8_t modemStateOf(const ModemLines& lines) {
  return static_cast<std::uint8_t>((lines.Cts ? ModemCts : 0) | (lines.Dsr ? ModemDsr : 0) |
                                   (lines.Cd ? ModemCd : 0) | (lines.Ring ? ModemRing : 0));
}

}  // namespace hy_wristlog::platform::com_port
