#include <algorithm>

#include "link/CommState.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

// The longest line of a logger has some seventy characters. A longer one comes from a faulty device: it is
// read without pauses, and broken off when it comes slowly.
constexpr std::size_t LongestLine = 4096, LongestOwnLine = 128;
constexpr std::int32_t TurnTime = 5;  ///< milliseconds
/// Milliseconds, which a pause of the process does not use up.
constexpr std::int64_t TimeBesideSilence = 2000;

enum SendMode : std::int32_t { CharByChar = 1, WithEcho = 2 };

/// Collects `expected` echoed characters, or those that come in time.
std::string collectEcho(CommState& state, const PortSteps& port, std::size_t expected, std::int32_t TXdelay) {
  std::string echo;
  const double deadline = state.deadline(TXdelay);
  for (;;) {
    const bool late = state.isOver(deadline);
    if (port.InBufferCount() >= 1) {
      const std::string read = port.Input();
      echo += read;
      if (state.consoleInUse()) state.form.subShowCOM(read);
    }
    state.world->serveEvents();
    if (late || echo.size() == expected) return echo;
    state.idle(deadline, expected - echo.size());
  }
}

void checkEcho(Procedure& procedure, const std::string& echo, char sent, std::size_t expected) {
  constexpr const char* Source = "Form_Comm.fncSendChars";
  if (echo.empty())
    raiseIn(procedure, NoCharacters, Source, "No Characters Received");
  else if (echo.size() != expected)
    raiseIn(procedure, WrongCharacters, Source, "No Characters or Wrong Characters Received");
  else if (std::any_of(echo.begin(), echo.end(), [&](char c) { return c != sent; }))
    raiseIn(procedure, WrongCharacters, Source, "Wrong Characters Received");
}

}  // namespace

void Form_Comm::subSendChars(std::string_view Chars, std::int32_t SendBytes, std::int32_t CarraigeReturn,
                             std::int16_t NumEchoedChars, std::int32_t CharDelay, std::int32_t TXdelay,
                             std::int32_t CmdDelay) {
  Procedure procedure{"Form_Comm", "subSendChars"};
  procedure.passesOn(NoCharacters, WrongCharacters);
  const PortSteps port{state_->control, procedure};
  procedure.run([&] {
    if (SendBytes == 0) SendBytes = WithEcho;
    if (SendBytes == WithEcho && NumEchoedChars < 1) NumEchoedChars = 1;
    state_->flush(port);

    if (SendBytes == CharByChar || SendBytes == WithEcho) {
      for (const char& c : Chars) {
        port.Output({&c, 1});
        Tools().subDelay(CharDelay);
        if (SendBytes != WithEcho) continue;
        const auto expected = static_cast<std::size_t>(NumEchoedChars);
        checkEcho(procedure, collectEcho(*state_, port, expected, TXdelay), c, expected);
      }
    } else {
      port.Output(Chars);
      if (state_->consoleInUse()) subShowCOM(Chars);
    }

    if (CarraigeReturn == 1) {
      port.Output("\r");
      if (state_->consoleInUse()) subShowCOM("\r\n");
    }
    if (CmdDelay > 0) Tools().subDelay(CmdDelay, 50);
  });
}

std::string Form_Comm::fncGetCharLine(char CharToWaitFor, std::int32_t RXdelay) {
  constexpr const char* Source = "Form_Comm.fncGetCharLine";
  Procedure procedure{"Form_Comm", "fncGetCharLine"};
  procedure.passesOn(NoCharacters, NoFinalCharacter);
  const PortSteps port{state_->control, procedure};
  const std::string_view final{&CharToWaitFor, 1};
  return procedure.run([&] {
    std::string line, read;
    double deadline = state_->deadline(RXdelay);
    std::int64_t left = RXdelay + TimeBesideSilence;
    while (read != final && line.size() <= LongestLine && left > 0) {
      const bool late = state_->isOver(deadline);
      const bool arrived = port.InBufferCount() >= 1;
      if (arrived) {
        deadline = state_->deadline(RXdelay);
        read = port.Input();
        if (read != final) line += read;
        if (state_->consoleInUse()) subShowCOM(read);
      } else if (late) {
        break;
      }
      const bool pauses = !state_->wakesOnInput() && (read == final || line.size() <= LongestOwnLine);
      if (!arrived || pauses) left -= state_->turn(TurnTime, deadline);
    }

    if (read != final) {
      if (line.empty())
        raiseIn(procedure, NoCharacters, Source, "No characters received");
      else
        raiseIn(procedure, NoFinalCharacter, Source, "No carriage return or final character received");
    }
    return line;
  });
}

}  // namespace hy_wristlog
