#include "pendrel/starred.h"

#include <chrono>
#include <numeric>

#include "base/numbers.h"
#include "pendrel/Pendrel.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace starred {

std::string hexWord(std::int32_t value) {
  const auto word = static_cast<std::uint16_t>(value);
  return Tools().fncConvertByteToHexString(static_cast<std::uint8_t>(word >> 8)) +
         Tools().fncConvertByteToHexString(static_cast<std::uint8_t>(word & 0xFF));
}

bool standsFor(std::string_view line, std::int32_t sum) {
  const auto told = parseHexadecimal(line.substr(0, 4));
  return told && static_cast<std::int32_t>(*told) == sum;
}

std::int32_t checksumOf(std::string_view text) {
  return std::accumulate(text.begin(), text.end(), 0,
                         [](std::int32_t sum, char c) { return sum + static_cast<std::uint8_t>(c); });
}

}  // namespace starred

StarredProcedure::StarredProcedure(Form_Comm& link, const char* name)
    : procedure{Pendrel::Module, name}, link_{link}, name_{name} {
  procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters);
}

void StarredProcedure::type(const StarredCommand& command, std::string_view argument, bool carriageReturn) {
  constexpr std::int32_t EchoChecked = 2, CharacterPause = 150, EchoWait = 3000;
  link_.subSendChars(std::string(command.Text).append(argument), EchoChecked, carriageReturn ? 1 : 0, 1,
                     CharacterPause, EchoWait, command.Wait);
}

void StarredProcedure::send(const StarredCommand& command, std::string_view argument, bool carriageReturn) {
  procedure.statement([&] { type(command, argument, carriageReturn); });
}

void StarredProcedure::sendPatiently(const StarredCommand& command, const char* text) {
  for (std::int32_t attempt = 1;; ++attempt) {
    const std::int32_t failure =
        procedure.statement([&] { return starred::failureToSend([&] { type(command, {}, false); }); });
    if (failure == 0) return;
    if (attempt == starred::Attempts) return raise(failure, text);
    rest();
  }
}

std::string StarredProcedure::readLine(char terminator) {
  constexpr std::int32_t Silence = 2000;
  return procedure.statement([&] { return link_.fncGetCharLine(terminator, Silence); });
}

std::vector<std::string> StarredProcedure::ask(const StarredCommand& command, std::string_view argument,
                                               bool withChecksum) {
  send(command, argument);
  std::vector<std::string> lines(static_cast<std::size_t>(command.Lines) + (withChecksum ? 1 : 0));
  for (std::string& line : lines) line = readLine();
  if (command.HasPrompt) readLine('>');
  return lines;
}

void StarredProcedure::rest() {
  procedure.statement([] {
    constexpr std::int32_t Pause = 2000;
    platform::Platform& world = platform::current();
    if (world.wakesOnInput()) return Tools().subDelay(Pause);
    world.clock().sleep(std::chrono::milliseconds{Pause});
  });
}

void StarredProcedure::raise(std::int32_t number, const char* text) { raise(number, name_, text); }

void StarredProcedure::raise(std::int32_t number, const char* sourceProcedure, const char* text) {
  procedure.statement(
      [&] { throw Failure(number, std::string(Pendrel::Module) + '.' + sourceProcedure, text); });
}

}  // namespace hy_wristlog
