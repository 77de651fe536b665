#include "simulate/port_server.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "hy_wristlog/failure.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;
namespace telnet = platform::telnet;
namespace com_port = platform::com_port;

namespace {

constexpr std::uint8_t Return = '\r', LineFeed = '\n', Null = 0;
constexpr std::string_view Signature = "HY_Wristlog simulated dock";

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

PortServer::PortServer(ServedLogger& logger) : logger_(logger) {
  options_.allowHere(telnet::ComPort);
  options_.allowThere(telnet::ComPort);
  for (const std::uint8_t option : {telnet::Binary, telnet::SuppressGoAhead}) {
    options_.offerHere(out_, option);
    options_.askThere(out_, option);
  }
}

void PortServer::negotiation(std::uint8_t verb, std::uint8_t option) {
  options_.take(out_, verb, option);
  if (greeted_ || (!options_.isOnThere(telnet::ComPort) && !options_.isOnHere(telnet::ComPort))) return;
  // Only changes are told from now on, so the client has to know from where.
  greeted_ = true;
  tellModemState(true);
}

/// A client that has not agreed on binary data sends a line feed or a null after each carriage return.
void PortServer::data(std::span<const std::uint8_t> bytes) {
  const bool isBinary = options_.isOnThere(telnet::Binary);
  for (const std::uint8_t byte : bytes) {
    const bool isFiller = !isBinary && afterReturn_ && (byte == LineFeed || byte == Null);
    afterReturn_ = byte == Return;
    if (!isFiller) toLogger_.push_back(byte);
  }
}

void PortServer::command(std::uint8_t code) {
  if (code == telnet::AreYouThere) telnet::addData(out_, bytesOf("[here]\r\n"));
}

void PortServer::subnegotiation(std::uint8_t option, std::span<const std::uint8_t> content) {
  if (option != telnet::ComPort || !greeted_) return;
  if (const auto message = com_port::messageOf(content)) obey(*message);
}

void PortServer::answerByte(std::uint8_t message, std::uint8_t value) {
  com_port::addByteMessage(out_, static_cast<std::uint8_t>(message + com_port::ServerOffset), value);
}

/// Every request is answered by what holds afterwards, so a client sees whether it was followed. A message
/// that is too short or too long is none.
void PortServer::obey(const com_port::Message& message) {
  platform::LineSettings wanted = settings_;
  const std::uint8_t value = message.byte().value_or(com_port::AskValue);
  if (message.Number == com_port::Signature) {
    if (message.Value.empty())
      com_port::addMessage(out_, com_port::Signature + com_port::ServerOffset, bytesOf(Signature));
    return;
  }
  if (message.Number == com_port::SetBaudRate) {
    const auto baud = message.number();
    if (!baud) return;
    constexpr std::uint32_t Fastest = 4000000;
    if (*baud != com_port::AskValue && *baud <= Fastest) wanted.Baud = static_cast<std::int32_t>(*baud);
    set(wanted);
    com_port::addNumberMessage(out_, com_port::SetBaudRate + com_port::ServerOffset,
                               static_cast<std::uint32_t>(settings_.Baud));
    return;
  }
  if (message.Number == com_port::SuspendFlow || message.Number == com_port::ResumeFlow) {
    suspended_ = message.Number == com_port::SuspendFlow;
    return;
  }
  if (message.Number == com_port::NotifyModemState) return tellModemState(true);
  if (!message.byte()) return;
  switch (message.Number) {
    case com_port::SetDataSize:
      if (value >= 5 && value <= 8) wanted.DataBits = value;
      set(wanted);
      return answerByte(message.Number, static_cast<std::uint8_t>(settings_.DataBits));
    case com_port::SetParity:
      wanted.Parity = com_port::parityOf(value).value_or(wanted.Parity);
      set(wanted);
      return answerByte(message.Number, com_port::codeOf(settings_.Parity));
    case com_port::SetStopSize:
      wanted.StopBits = com_port::stopBitsOf(value).value_or(wanted.StopBits);
      set(wanted);
      return answerByte(message.Number, com_port::codeOf(settings_.StopBits));
    case com_port::SetControl:
      return answerByte(message.Number, control(value));
    case com_port::SetLineStateMask:
      lineMask_ = value;
      return answerByte(message.Number, value);
    case com_port::SetModemStateMask:
      modemMask_ = value;
      return answerByte(message.Number, value);
    case com_port::PurgeData:
      purge(value);
      return answerByte(message.Number, value);
    default:
      return;
  }
}

void PortServer::set(platform::LineSettings wanted) {
  if (wanted == settings_) return;
  try {
    logger_.port()->configure(wanted);
    settings_ = wanted;
  } catch (const hy_wristlog::Failure& failure) {
    logger_.tellRefused("The settings of the port were refused", failure);
  }
}

std::uint8_t PortServer::control(std::uint8_t value) {
  switch (value) {
    case com_port::BreakOn:
    case com_port::BreakOff:
    case com_port::AskBreak:
      if (value != com_port::AskBreak) breaks_ = value == com_port::BreakOn;
      return breaks_ ? com_port::BreakOn : com_port::BreakOff;
    case com_port::DtrOn:
    case com_port::DtrOff:
    case com_port::AskDtr:
      if (value != com_port::AskDtr) logger_.port()->setDtr(dtr_ = value == com_port::DtrOn);
      return dtr_ ? com_port::DtrOn : com_port::DtrOff;
    case com_port::RtsOn:
    case com_port::RtsOff:
    case com_port::AskRts:
      if (value != com_port::AskRts) logger_.port()->setRts(rts_ = value == com_port::RtsOn);
      return rts_ ? com_port::RtsOn : com_port::RtsOff;
    case com_port::AskInboundFlowControl:
    case com_port::NoInboundFlowControl:
    case com_port::InboundXonXoff:
    case com_port::InboundHardwareFlowControl:
    case com_port::DtrFlowControl:
      return com_port::NoInboundFlowControl;
    default:
      return com_port::NoFlowControl;
  }
}

void PortServer::purge(std::uint8_t what) {
  if (what == com_port::PurgeReceived || what == com_port::PurgeBoth) logger_.port()->discardInput();
  if (what == com_port::PurgeToSend || what == com_port::PurgeBoth) {
    toLogger_.clear();
    logger_.bench().line().discardOutput();
  }
}

void PortServer::tellModemState(bool always) {
  const platform::ModemLines now = logger_.port()->modemLines();
  std::uint8_t state = com_port::modemStateOf(now);
  if (now.Cts != lines_.Cts) state |= com_port::ModemCtsChanged;
  if (now.Dsr != lines_.Dsr) state |= com_port::ModemDsrChanged;
  if (lines_.Ring && !now.Ring) state |= com_port::ModemRingEnded;
  if (now.Cd != lines_.Cd) state |= com_port::ModemCdChanged;
  const bool changed = !(now == lines_);
  lines_ = now;
  const auto told = static_cast<std::uint8_t>(state & modemMask_);
  if (always || (changed && told != 0)) answerByte(com_port::NotifyModemState, told);
}

void PortServer::tellLineErrors() {
  const platform::LineErrors errors = logger_.port()->takeErrors();
  std::uint8_t state = 0;
  if (errors.Break > 0) state |= com_port::LineBreak;
  if (errors.Framing > 0) state |= com_port::LineFraming;
  if (errors.Parity > 0) state |= com_port::LineParityError;
  if (errors.Overrun + errors.BufferOverflow > 0) state |= com_port::LineOverrun;
  state &= lineMask_;
  if (state != 0) answerByte(com_port::NotifyLineState, state);
}

void PortServer::speak() {
  std::array<std::uint8_t, 4096> piece{};
  const bool isBinary = options_.isOnHere(telnet::Binary);
  while (!suspended_ && out_.size() < MostUnsent) {
    const std::size_t count = logger_.port()->read(piece);
    if (count == 0) return;
    for (const std::uint8_t& byte : std::span(piece).first(count)) {
      telnet::addData(out_, std::span(&byte, 1));
      if (byte == Return && !isBinary) out_.push_back(Null);
    }
  }
}

void PortServer::serve() {
  const std::size_t taken = logger_.port()->write(toLogger_);
  toLogger_.erase(toLogger_.begin(), toLogger_.begin() + static_cast<std::ptrdiff_t>(taken));
  if (greeted_) {
    tellModemState(false);
    tellLineErrors();
  }
  speak();
}

}  // namespace wristlog
