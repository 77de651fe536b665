#include "platform/telnet.h"

#include <algorithm>

namespace hy_wristlog::platform::telnet {

void Parser::take(std::span<const std::uint8_t> bytes, Listener& listener) {
  while (!bytes.empty()) {
    if (state_ != State::Data) {
      takeOther(bytes.front(), listener);
      bytes = bytes.subspan(1);
      continue;
    }
    const auto iac = std::find(bytes.begin(), bytes.end(), Iac);
    const auto plain = static_cast<std::size_t>(iac - bytes.begin());
    if (plain > 0) listener.data(bytes.first(plain));
    if (iac != bytes.end()) state_ = State::Command;
    bytes = bytes.subspan(std::min(plain + 1, bytes.size()));
  }
}

void Parser::takeOther(std::uint8_t byte, Listener& listener) {
  switch (state_) {
    case State::Data:
      break;
    case State::Command:
      takeCommand(byte, listener);
      break;
    case State::Verb:
      state_ = State::Data;
      listener.negotiation(verb_, byte);
      break;
    case State::Option:
      option_ = byte;
      content_.clear();
      tooLong_ = false;
      state_ = State::Content;
      break;
    case State::Content:
      if (byte == Iac)
        state_ = State::ContentCommand;
      else
        addContent(byte);
      break;
    case State::ContentCommand:
      if (byte == Se) {
        endSubnegotiation(listener);
      } else if (byte == Iac) {
        addContent(byte);
        state_ = State::Content;
      } else {
        takeCommand(byte, listener);
      }
  }
}

void Parser::takeCommand(std::uint8_t code, Listener& listener) {
  state_ = State::Data;
  switch (code) {
    case Iac:
      listener.data(std::span(&code, 1));
      break;
    case Will:
    case Wont:
    case Do:
    case Dont:
      verb_ = code;
      state_ = State::Verb;
      break;
    case Sb:
      state_ = State::Option;
      break;
    default:
      listener.command(code);
  }
}

void Parser::addContent(std::uint8_t byte) {
  if (content_.size() < LongestSubnegotiation)
    content_.push_back(byte);
  else
    tooLong_ = true;
}

void Parser::endSubnegotiation(Listener& listener) {
  state_ = State::Data;
  if (!tooLong_) listener.subnegotiation(option_, content_);
}

void addData(Bytes& out, std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    out.push_back(byte);
    if (byte == Iac) out.push_back(Iac);
  }
}

void addCommand(Bytes& out, std::uint8_t code) {
  out.push_back(Iac);
  out.push_back(code);
}

void addNegotiation(Bytes& out, std::uint8_t verb, std::uint8_t option) {
  addCommand(out, verb);
  out.push_back(option);
}

void addSubnegotiation(Bytes& out, std::uint8_t option, std::span<const std::uint8_t> content) {
  addNegotiation(out, Sb, option);
  addData(out, content);
  addCommand(out, Se);
}

void Options::propose(Bytes& out, Side& side, std::uint8_t verb, std::uint8_t option) {
  side.Allowed = true;
  if (side.Now != State::Off) return;
  side.Now = State::Proposed;
  addNegotiation(out, verb, option);
}

void Options::turnOn(Bytes& out, Side& side, std::uint8_t yes, std::uint8_t no, std::uint8_t option) {
  if (side.Now == State::On) return;
  if (!side.Allowed || side.Now == State::Refused) return addNegotiation(out, no, option);
  if (side.Now != State::Proposed) addNegotiation(out, yes, option);
  side.Now = State::On;
}

void Options::turnOff(Bytes& out, Side& side, std::uint8_t no, std::uint8_t option) {
  if (side.Now == State::On) addNegotiation(out, no, option);
  if (side.Now != State::Off) side.Now = State::Refused;
}

void Options::take(Bytes& out, std::uint8_t verb, std::uint8_t option) {
  switch (verb) {
    case Will:
      return turnOn(out, there_[option], Do, Dont, option);
    case Wont:
      return turnOff(out, there_[option], Dont, option);
    case Do:
      return turnOn(out, here_[option], Will, Wont, option);
    case Dont:
      return turnOff(out, here_[option], Wont, option);
    default:
      return;
  }
}

}  // namespace hy_wristlog::platform::telnet
