#include "simulator/pendrel_shell.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <utility>

namespace hy_wristlog::simulator {

using namespace std::chrono_literals;

namespace {

constexpr char CarriageReturn = '\r';
constexpr std::string_view Stars = "***";
constexpr nanoseconds TypingForgottenAfter = 1800ms;
constexpr nanoseconds RestartTime = 600ms;
constexpr nanoseconds ClearTimePerKilobyte = 150ms;
constexpr nanoseconds TurnRound = 10ms;  ///< from the end of a block to the return to the ordinary speed
constexpr std::int32_t CommandBaud = 600, BlockBaud = 4800;
constexpr std::int32_t DataBegin = 128, MostEpochs = 32896;

enum class Argument { Hex, Decimal, Text };

struct Command {
  std::string_view Letters;
  Argument Kind;
  std::size_t Length;
};

constexpr Command Commands[] = {
    {"C", Argument::Hex, 0},     {"N", Argument::Hex, 2},     {"O", Argument::Hex, 4},
    {"P", Argument::Hex, 6},     {"X", Argument::Hex, 2},     {"GU", Argument::Hex, 0},
    {"B", Argument::Text, 64},   {"A", Argument::Hex, 2},     {"D", Argument::Decimal, 6},
    {"E", Argument::Decimal, 4}, {"L", Argument::Decimal, 6}, {"W", Argument::Hex, 8},
    {"H", Argument::Hex, 4},     {"F", Argument::Hex, 4}};

bool isOf(Argument kind, char c) {
  const bool decimal = c >= '0' && c <= '9';
  switch (kind) {
    case Argument::Decimal:
      return decimal;
    case Argument::Hex:
      return decimal || (c >= 'A' && c <= 'F');
    case Argument::Text:
      break;
  }
  return static_cast<std::uint8_t>(c) >= 32;
}

bool knows(PendrelModel model, char letter) {
  if (letter == 'W') return model != PendrelModel::Plain;
  if (letter == 'H' || letter == 'F') return model == PendrelModel::Plain;
  return true;
}

enum class Match { None, Begun, Whole };

Match match(std::string_view typed, PendrelModel model) {
  if (typed.size() <= Stars.size()) return Stars.starts_with(typed) ? Match::Begun : Match::None;
  typed.remove_prefix(Stars.size());
  for (const Command& command : Commands) {
    if (!knows(model, command.Letters.front())) continue;
    if (typed.size() < command.Letters.size() && command.Letters.starts_with(typed)) return Match::Begun;
    if (!typed.starts_with(command.Letters)) continue;
    typed.remove_prefix(command.Letters.size());
    if (!std::ranges::all_of(typed, [&](char c) { return isOf(command.Kind, c); })) return Match::None;
    return typed.size() == command.Length ? Match::Whole : Match::Begun;
  }
  return Match::None;
}

unsigned number(std::string_view digits, int base = 16) {
  unsigned value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  return value;
}

unsigned number(std::string_view text, std::size_t at, std::size_t count, int base) {
  return number(text.substr(at, count), base);
}

std::uint8_t byteOf(std::string_view digits) { return static_cast<std::uint8_t>(number(digits)); }

std::string hex(unsigned value, int width) {
  char text[16];
  std::snprintf(text, sizeof text, "%0*X", width, value);
  return text;
}

unsigned sumOf(std::string_view text) {
  unsigned sum = 0;
  for (const char c : text) sum += static_cast<std::uint8_t>(c);
  return sum;
}

bool isDate(std::string_view digits) {
  const unsigned day = number(digits, 0, 2, 10), month = number(digits, 2, 2, 10);
  return day >= 1 && day <= 31 && month >= 1 && month <= 12;
}

bool isTime(std::string_view digits) {
  return number(digits, 0, 2, 10) < 24 && number(digits, 2, 2, 10) < 60;
}

/// Pairs of digits with blanks between them.
std::string spaced(std::string_view digits) {
  std::string text;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    if (at > 0) text += ' ';
    text += digits.substr(at, 2);
  }
  return text;
}

/// The number of epochs that an epoch word stands for. The word is the address from which the logger counts
/// up to the first byte of the data.
std::int32_t epochsOf(std::string_view word) {
  return DataBegin - static_cast<std::int16_t>(static_cast<std::uint16_t>(number(word)));
}

/// The delay that the two words stand for: quarter minutes, and the seconds beyond them.
std::optional<PendrelDelay> delayOf(std::string_view epochWord, std::string_view secondsWord,
                                    std::int32_t epochLength) {
  const auto quarters = static_cast<std::int32_t>(number(secondsWord, 0, 2, 16)),
             seconds = static_cast<std::int32_t>(number(secondsWord, 2, 2, 16));
  const PendrelDelay delay{epochsOf(epochWord), quarters * 15 + seconds};
  if (delay.Epochs < 1 || delay.Epochs > MostEpochs || seconds > 14 || delay.Seconds >= epochLength)
    return std::nullopt;
  return delay;
}

}  // namespace

PendrelShell::PendrelShell(Timeline& timeline, PendrelParts& parts, PendrelRecorder& recorder,
                           PendrelFaults& faults, Line line, Tell tell)
    : timeline_(timeline),
      parts_(parts),
      recorder_(recorder),
      faults_(faults),
      line_(std::move(line)),
      tell_(std::move(tell)),
      alarm_(timeline, [this] { due(); }) {}

void PendrelShell::restart() {
  cutOff();
  if (task_ != Task::Clear) return;
  task_ = Task::None;
  alarm_.cancel();
}

void PendrelShell::cutOff() {
  typed_.clear();
  if (task_ != Task::StartBlock && task_ != Task::EndBlock) return;
  task_ = Task::None;
  alarm_.cancel();
  line_.SetBaud(CommandBaud);
}

void PendrelShell::receive(std::uint8_t byte) {
  if (faults_.Silent || busy()) return;
  if (timeline_.now() - lastTyped_ >= TypingForgottenAfter) typed_.clear();
  lastTyped_ = timeline_.now();
  echo(byte);
  if (byte == CarriageReturn) {
    carriageReturn();
    return;
  }
  typed_ += static_cast<char>(byte);
  switch (match(typed_, parts_.Model)) {
    case Match::Whole:
      complete();
      break;
    case Match::None:
      typed_ = byte == '*' ? "*" : "";
      break;
    case Match::Begun:
      break;
  }
}

/// A carriage return ends a short subject text; otherwise it drops what was typed and asks for the prompt.
void PendrelShell::carriageReturn() {
  if (typed_.starts_with("***B")) {
    complete();
    return;
  }
  typed_.clear();
  commands_.emplace_back();
  if (!faults_.Unheeded[CarriageReturn].strikes()) say(">");
}

void PendrelShell::echo(std::uint8_t byte) {
  if (faults_.LoseEcho.strikes()) return;
  if (faults_.AlterEcho.strikes()) byte ^= 1;
  line_.Send(std::array{byte}, faults_.DelayEcho.strikes() ? faults_.EchoDelay : 0ns);
}

void PendrelShell::say(std::string_view text) {
  line_.Send({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, 0ns);
}

void PendrelShell::complete() {
  commands_.push_back(std::exchange(typed_, {}));
  const std::string_view command = commands_.back();
  const char letter = command[Stars.size()];
  const std::string_view arguments = command.substr(Stars.size() + (letter == 'G' ? 2 : 1));
  if (faults_.Unheeded[letter].strikes() || !makesSense(letter, arguments)) return;
  if (!faults_.Feigned[letter].strikes()) obey(letter, arguments);
  answer(letter, arguments);
}

bool PendrelShell::makesSense(char letter, std::string_view arguments) const {
  switch (letter) {
    case 'N':
      return arguments[1] == '0' && number(arguments) < parts_.Memory.size() / 256;
    case 'A':
      return pendrel_epoch::seconds(byteOf(arguments)) > 0;
    case 'D':
    case 'L':
      return isDate(arguments);
    case 'E':
      return isTime(arguments);
    case 'W':
      return delayOf(arguments.substr(0, 4), arguments.substr(4), parts_.epochLength()).has_value();
    case 'H':
      return epochsOf(arguments) >= 1 && epochsOf(arguments) <= MostEpochs;
    case 'F':
      return !epochWord_.empty() && delayOf(epochWord_, arguments, parts_.epochLength()).has_value();
    default:
      return true;
  }
}

void PendrelShell::obey(char letter, std::string_view arguments) {
  switch (letter) {
    case 'P':
      parts_.Memory.write(number(arguments, 0, 4, 16), byteOf(arguments.substr(4)));
      break;
    case 'X':
      recorder_.stop();
      parts_.Memory.clear();
      tell_(Notice::Erased);
      break;
    case 'G':
      recorder_.stop();
      tell_(Notice::Stopped);
      epochWord_.clear();
      begin(Task::Restart, RestartTime);
      break;
    case 'B':
      parts_.Texts.Subject = arguments;
      break;
    case 'A':
      parts_.EpochCode = byteOf(arguments);
      break;
    case 'D':
      parts_.Texts.StartDate = arguments;
      break;
    case 'E':
      parts_.Texts.StartTime = arguments;
      break;
    case 'L':
      parts_.Texts.BatteryDate = arguments;
      break;
    case 'W':
      recorder_.arm(*delayOf(arguments.substr(0, 4), arguments.substr(4), parts_.epochLength()));
      tell_(Notice::Configured);
      break;
    case 'H':
      epochWord_ = arguments;
      break;
    case 'F':
      recorder_.arm(*delayOf(std::exchange(epochWord_, {}), arguments, parts_.epochLength()));
      tell_(Notice::Configured);
      break;
    default:
      break;
  }
}

void PendrelShell::answer(char letter, std::string_view arguments) {
  switch (letter) {
    case 'C':
      answerSetup();
      break;
    case 'O':
      answerLocation(arguments);
      break;
    case 'W':
      answerDelay(arguments);
      break;
    case 'N':
      block_ = number(arguments.substr(0, 1));
      begin(Task::StartBlock, faults_.BlockDelay);
      break;
    case 'X':
      begin(Task::Clear, ClearTimePerKilobyte * static_cast<std::int64_t>(parts_.Memory.size() / 1024));
      break;
    case 'P':
    case 'L':
      say("\r>");
      break;
    case 'H':
    case 'F':
      say("\r");
      break;
    default:
      break;
  }
}

unsigned PendrelShell::told(char letter, unsigned sum) {
  return (faults_.BadChecksum[letter].strikes() ? sum ^ 0x0101U : sum) & 0xFFFFU;
}

std::vector<std::string> PendrelShell::setupLines() const {
  const unsigned pointer = static_cast<std::uint16_t>(recorder_.pointer());
  const std::string record = (parts_.Model == PendrelModel::Steps ? "B" : "C") + hex(parts_.Firmware, 2) +
                             ' ' + hex(parts_.ActivityCalibration, 2) + ' ' + parts_.SerialDigits + ' ' +
                             hex(static_cast<unsigned>(parts_.Memory.size() / 256 - 1), 2) + ' ' +
                             hex(parts_.Resets, 2);
  std::vector<std::string> lines{"",
                                 parts_.Texts.Subject,
                                 hex(parts_.EpochCode, 2),
                                 hex(parts_.StatusByte, 2),
                                 hex(pointer, 4),
                                 spaced(parts_.Texts.StartDate + parts_.Texts.StartTime),
                                 spaced(parts_.Texts.BatteryDate),
                                 record};
  for (const auto& [index, text] : faults_.SetupLines)
    if (index < lines.size()) lines[index] = text;
  return lines;
}

void PendrelShell::answerSetup() {
  std::string text;
  for (const std::string& line : setupLines()) text += line + CarriageReturn;
  // The sum leaves out the carriage return after the last line.
  if (parts_.hasChecksums()) text += hex(told('C', sumOf(text) - CarriageReturn), 4) + CarriageReturn;
  say(text + ">");
}

void PendrelShell::answerLocation(std::string_view address) {
  const std::string value = hex(parts_.Memory.read(number(address)), 2);
  std::string text = value + CarriageReturn;
  if (parts_.hasChecksums()) text += hex(told('O', sumOf(address) + sumOf(value)), 4) + CarriageReturn;
  say(text + ">");
}

void PendrelShell::answerDelay(std::string_view digits) {
  std::string line{digits};
  line += hex(told('W', sumOf(digits)), 4);
  if (faults_.WrongDelayEcho.strikes()) line[7] = line[7] == '0' ? '1' : '0';
  say(CarriageReturn + line + "\r>");
}

void PendrelShell::begin(Task task, nanoseconds duration) {
  task_ = task;
  alarm_.setAfter(duration);
}

void PendrelShell::due() {
  switch (std::exchange(task_, Task::None)) {
    case Task::StartBlock:
      sendBlock();
      break;
    case Task::EndBlock:
      line_.SetBaud(CommandBaud);
      if (!holdsMoreBlocks()) tell_(Notice::Downloaded);
      break;
    case Task::Clear:
      say("\r>");
      break;
    default:
      break;
  }
}

/// Whether the recording goes on behind the block that was sent last.
bool PendrelShell::holdsMoreBlocks() const {
  return (block_ + 1) * PendrelMemory::BlockSize < PendrelMemory::HeaderSize + parts_.Memory.used();
}

void PendrelShell::persist(SavedState& state) {
  constexpr std::size_t EpochWordLength = 4;
  state.text("shell.epoch_word", epochWord_, EpochWordLength);
  bool clears = task_ == Task::Clear;
  state.flag("shell.clears", clears);
  if (state.loading() && clears) begin(Task::Clear, nanoseconds{0});
}

void PendrelShell::sendBlock() {
  const auto data = parts_.Memory.block(block_);
  std::vector<std::uint8_t> bytes{data.begin(), data.end()};
  if (parts_.hasChecksums()) {
    unsigned sum = 0;
    for (const std::uint8_t byte : bytes) sum += byte;
    sum = told('N', sum);
    bytes.push_back(static_cast<std::uint8_t>(sum >> 8));
    bytes.push_back(static_cast<std::uint8_t>(sum & 0xFFU));
  }
  if (faults_.ShortBlock.strikes()) bytes.resize(bytes.size() - std::min(bytes.size(), faults_.Shortfall));
  if (faults_.LongBlock.strikes()) bytes.resize(bytes.size() + faults_.Excess, PendrelMemory::Blank);
  line_.SetBaud(BlockBaud);
  line_.Send(bytes, 0ns);
  constexpr std::int64_t BitsPerByte = 10;
  const nanoseconds each = nanoseconds{1s} * BitsPerByte / BlockBaud + 1ns;
  begin(Task::EndBlock, each * static_cast<std::int64_t>(bytes.size()) + TurnRound);
}

}  // namespace hy_wristlog::simulator
