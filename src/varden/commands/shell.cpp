#include "varden/commands/shell.h"

#include <array>
#include <charconv>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"
#include "varden/failures.h"

namespace hy_wristlog {
namespace {

constexpr std::int32_t Sends = 3;
constexpr std::int32_t Rounds = 3;
constexpr std::int32_t EchoWait = 1000;

/// The failure's number when the logger did not hear the command or echoed it wrong, otherwise 0.
std::int32_t failureToSend(const Failure& failure) {
  const bool ofTheEcho =
      failure.Number == FailureNumber::NoCharacters || failure.Number == FailureNumber::WrongCharacters;
  const bool ofTheSend = failure.Source.find("Form_Comm.subSendChars") != std::string::npos;
  return ofTheEcho && ofTheSend ? failure.Number : 0;
}

}  // namespace

std::string hexadecimal(std::uint32_t value) {
  std::array<char, 8> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16);
  return asciiUpper(std::string(digits.data(), result.ptr));
}

void ShellProcedure::send(std::string_view command, const std::function<void()>& beforeRepeat) {
  std::int32_t failure;
  do {
    failure = 0;
    try {
      if (command.empty())
        link_.subSendChars({}, 3, 1, 1, 0, 0, 0);
      else
        link_.subSendChars(command, 2, 1, 1, 0, EchoWait, 0);
    } catch (const Failure& ofSend) {
      failure = failureToSend(ofSend);
    }
    if (failure != 0) {
      if (beforeRepeat) beforeRepeat();
      ignoringFailures([] { Tools().subDelay(500, 50); });
      ++failedSends_;
    }
  } while (failure != 0 && failedSends_ < Sends);
  if (failure != 0) raiseIn(procedure, sendFailureProcedure, failure, "Failure to send command");
}

std::string ShellProcedure::readLine(char terminator, std::int32_t silence) {
  return procedure.statement([&] { return link_.fncGetCharLine(terminator, silence); });
}

std::string ShellProcedure::ask(const ShellCommand& command, std::string_view argument) {
  send(std::string(command.Text).append(argument));
  std::string value;
  if (command.EchoSilence != 0) readLine('\r', command.EchoSilence);
  if (command.ValueSilence != 0) value = readLine('\r', command.ValueSilence);
  if (command.PromptSilence != 0) readLine('>', command.PromptSilence);
  return value;
}

void ShellProcedure::askUntil(const ShellCommand& command, std::string_view argument, std::int32_t number,
                              const char* text, const std::function<bool(std::string& line)>& accepts) {
  for (std::int32_t round = 0; round < Rounds; ++round) {
    std::string line = ask(command, argument);
    if (procedure.statement([&] { return accepts(line); })) return;
  }
  raise(number, text);
}

void ShellProcedure::raise(std::int32_t number, const char* text) { raiseIn(procedure, name_, number, text); }

bool VardenLogger::fncCheckCRCandParse(std::string& line) {
  constexpr std::size_t CrcDigits = 4;
  const std::string received = std::exchange(line, {});
  const std::size_t mark = received.find('#');
  if (mark == std::string::npos || mark == 0) return false;
  std::string digits = received.substr(mark + 1, CrcDigits);
  if (digits.size() < CrcDigits) return false;
  const std::int32_t crc = Tools().fncConvertHexStringToLong(digits);
  if (crc == 0) return false;
  const std::vector<std::uint8_t> data(received.begin(),
                                       received.begin() + static_cast<std::ptrdiff_t>(mark));
  if (Tools().fncGetCRC16(data) != crc) return false;
  line = trimBlanks(std::string_view(received).substr(0, mark));
  return true;
}

}  // namespace hy_wristlog
