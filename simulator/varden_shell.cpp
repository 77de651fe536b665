#include "simulator/varden_shell.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "simulator/calendar.h"
#include "simulator/checksum.h"
#include "simulator/shell_numbers.h"

namespace hy_wristlog::simulator {

using namespace std::chrono_literals;

namespace {

constexpr std::uint8_t CarriageReturn = 13;
constexpr nanoseconds LineForgottenAfter = 400ms;
constexpr std::size_t LongestLine = 80;
constexpr std::uint8_t ClockOff = 0, Clock12 = 1, Clock24 = 2;

bool printable(std::uint8_t byte) { return byte >= 32 && byte < 127; }

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

template <class... Values>
std::string format(const char* pattern, Values... values) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, pattern, values...);
  return {text, static_cast<std::size_t>(std::clamp(length, 0, 63))};
}

nanoseconds eraseTime(const RecordingMemory& memory) {
  return std::min<nanoseconds>(2400ms * static_cast<std::int64_t>(memory.size() / RecordingMemory::Unit),
                               38s);
}

}  // namespace

VardenShell::VardenShell(Timeline& timeline, LoggerParts& parts, Recorder& recorder, LoggerFaults& faults,
                         std::string displayFirmware, Output output, Tell tell)
    : timeline_(timeline),
      parts_(parts),
      recorder_(recorder),
      faults_(faults),
      displayFirmware_(std::move(displayFirmware)),
      output_(std::move(output)),
      tell_(std::move(tell)),
      sender_(
          timeline, faults.Transfer, [this](auto bytes) { output_(bytes, 0ns); },
          [this](bool complete) {
            state_ = State::Prompt;
            if (complete && sendsRecording_) tell_(Notice::Downloaded);
            if (complete) prompt();
          }),
      receiver_(
          timeline, faults.Transfer, [this](auto bytes) { output_(bytes, 0ns); },
          [this](bool complete, std::vector<std::uint8_t> data) { storeConfig(complete, data); }),
      eraseDone_(timeline, [this] { erased(); }) {}

void VardenShell::restart() {
  sender_.cancel();
  receiver_.cancel();
  typed_.clear();
  if (state_ != State::Erasing) state_ = State::Prompt;
}

void VardenShell::receive(std::uint8_t byte) {
  if (faults_.Silent) return;
  switch (state_) {
    case State::Prompt:
      type(byte);
      break;
    case State::Sending:
      sender_.receive(byte);
      break;
    case State::Receiving:
      receiver_.receive(byte);
      break;
    case State::Erasing:
      break;
  }
}

void VardenShell::type(std::uint8_t byte) {
  if (timeline_.now() - lastTyped_ >= LineForgottenAfter) typed_.clear();
  lastTyped_ = timeline_.now();
  if (byte == xmodem::CtrlC) {
    typed_.clear();
    say("\r>");
  } else if (byte == CarriageReturn) {
    const std::string line = std::exchange(typed_, {});
    commands_.push_back(line);
    if (faults_.IgnoreCommand.strikes()) return;
    echo(byte);
    obey(line);
  } else if (printable(byte)) {
    if (typed_.size() < LongestLine) typed_ += static_cast<char>(byte);
    echo(byte);
  }
}

void VardenShell::echo(std::uint8_t byte) {
  if (faults_.LoseEcho.strikes()) return;
  if (faults_.AlterEcho.strikes()) byte ^= 1;
  output_(std::array{byte}, faults_.DelayEcho.strikes() ? faults_.EchoDelay : 0ns);
}

void VardenShell::say(std::string_view text) { output_(bytesOf(text), 0ns); }

void VardenShell::sayValue(const std::string& value) {
  unsigned crc = checksum(value);
  if (faults_.BadLineChecksum.strikes()) crc ^= 0x0101;
  if (faults_.ZeroLineChecksum.strikes()) crc = 0;
  say(value + format("#%04X", crc & 0xFFFFU) + "\r>");
}

void VardenShell::obey(const std::string& line) {
  if (line.empty())
    prompt();
  else if (!transfer(line) && !answerValue(line) && !change(line) && !debugMemory(line))
    say("?\r>");
}

bool VardenShell::answerValue(std::string_view line) {
  if (line == "show ver") {
    const bool vivid = parts_.Model == LoggerModel::Vivid;
    sayValue(parts_.Firmware.version() + (vivid ? " " + displayFirmware_ : std::string{}));
  } else if (line == "show battery") {
    sayValue(batteryLine());
  } else if (line == "show clock time") {
    sayValue(faults_.GarbledClock.strikes() ? "--:--:--" : std::to_string(parts_.Clock.seconds()));
  } else if (line == "show clock mode") {
    sayValue(clockMode());
  } else {
    return false;
  }
  return true;
}

std::string VardenShell::batteryLine() const {
  const CivilTime date = civilTime(momentOf(parts_.Block.signedNumber(block::BatteryDate)));
  std::string line = format("%.3f %02d%02d%04d", parts_.Battery.voltage(), date.Day, date.Month, date.Year);
  if (parts_.Firmware.showsLoadedVoltage()) line += format(" %.3f", parts_.Battery.voltageUnderLoad());
  return line;
}

std::string VardenShell::clockMode() const {
  switch (parts_.Block.number(block::DisplayFormats) & 15U) {
    case Clock12:
      return "12";
    case Clock24:
      return "24";
    default:
      return "0";
  }
}

bool VardenShell::setClockMode(std::int64_t mode) {
  if (mode != 0 && mode != 12 && mode != 24) return false;
  const std::uint32_t others = parts_.Block.number(block::DisplayFormats) & 0xF0U;
  parts_.Block.set(block::DisplayFormats, others | (mode == 12 ? Clock12 : mode == 24 ? Clock24 : ClockOff));
  return true;
}

bool VardenShell::setClock(std::int64_t seconds) {
  if (faults_.RefuseClock.strikes()) return true;
  parts_.Clock.set(seconds);
  recorder_.clockChanged();
  return true;
}

bool VardenShell::setStop(std::int64_t seconds) {
  if (seconds == 0) {
    recorder_.stop();
    tell_(Notice::Stopped);
  } else {
    parts_.Block.set(block::StopTime, seconds);
    recorder_.reconsider();
  }
  return true;
}

bool VardenShell::setPointer(std::int64_t address) {
  if (address < 0 || address > static_cast<std::int64_t>(parts_.Memory.size())) return false;
  parts_.Block.set(block::NextAddress, address);
  if (parts_.Firmware.hasMemoryFullFlag()) parts_.Block.set(block::MemoryFull, FlagNo);
  return true;
}

bool VardenShell::change(std::string_view line) {
  bool done = false;
  if (line == "memory erase") {
    erase();
    return true;
  }
  if (const auto seconds = numberBehind(line, "clock time ")) {
    done = setClock(*seconds);
  } else if (const auto mode = numberBehind(line, "clock mode ")) {
    done = setClockMode(*mode);
  } else if (const auto stop = numberBehind(line, "acq stop ")) {
    done = setStop(*stop);
  } else if (const auto address = numberBehind(line, "acq dptr ", 16)) {
    done = setPointer(*address);
  } else if (const auto available = switchBehind(line, "data avail ")) {
    parts_.Block.set(block::DataAvailable, *available ? FlagYes : FlagNo);
    done = true;
  } else if (const auto asleep = switchBehind(line, "sleep "); asleep && parts_.Firmware.hasSleepMode()) {
    parts_.InStorage = *asleep;
    recorder_.reconsider();
    done = true;
  }
  if (done) prompt();
  return done;
}

bool VardenShell::debugMemory(std::string_view line) {
  if (const auto address = numberBehind(line, "debug mem r 0x", 16)) {
    sayValue(format("0x%02X", static_cast<unsigned>(parts_.Memory.read(static_cast<std::size_t>(*address)))));
    return true;
  }
  const auto split = line.find(" 0x", std::string_view{"debug mem w 0x"}.size());
  if (split == std::string_view::npos) return false;
  const auto address = numberBehind(line.substr(0, split), "debug mem w 0x", 16);
  const auto value = numberBehind(line.substr(split), " 0x", 16);
  if (!address || !value || *value < 0 || *value > 255 || *address < 0) return false;
  if (!parts_.Memory.write(static_cast<std::size_t>(*address), static_cast<std::uint8_t>(*value)))
    return false;
  prompt();
  return true;
}

bool VardenShell::transfer(std::string_view line) {
  if (line == "show config") {
    sendConfig();
  } else if (line == "show data") {
    const auto bytes = parts_.Memory.first(parts_.Block.number(block::NextAddress));
    state_ = State::Sending;
    sendsRecording_ = true;
    sender_.start({bytes.begin(), bytes.end()}, true);
  } else if (line == "config") {
    state_ = State::Receiving;
    receiver_.start();
  } else {
    return false;
  }
  return true;
}

void VardenShell::sendConfig() {
  auto image = parts_.Block.image();
  if (faults_.BadConfigChecksum.strikes()) image[0] ^= 0x10;
  state_ = State::Sending;
  sendsRecording_ = false;
  sender_.start({image.begin(), image.end()}, false);
}

void VardenShell::storeConfig(bool complete, std::span<const std::uint8_t> data) {
  state_ = State::Prompt;
  if (!complete) return;
  constexpr std::size_t Wanted = ConfigBlock::Size - ConfigBlock::WritableFrom;
  if (data.size() >= Wanted) {
    std::vector<std::uint8_t> stored{data.begin(), data.begin() + Wanted};
    if (faults_.MisstoreConfig.strikes() && faults_.MisstoredOffset >= ConfigBlock::WritableFrom)
      stored.at(faults_.MisstoredOffset - ConfigBlock::WritableFrom) ^= 1;
    parts_.Block.write(stored);
    recorder_.arm();
    tell_(Notice::Configured);
  }
  say("\x06>");
}

void VardenShell::erase() {
  recorder_.stop();
  state_ = State::Erasing;
  eraseDone_.setAfter(eraseTime(parts_.Memory));
}

void VardenShell::erased() {
  state_ = State::Prompt;
  parts_.Memory.erase();
  parts_.Block.set(block::DataAvailable, FlagNo);
  setPointer(0);
  tell_(Notice::Erased);
  prompt();
}

void VardenShell::persist(SavedState& state) {
  state.alarm("shell.erase_done", eraseDone_);
  if (state.loading() && eraseDone_.pending()) state_ = State::Erasing;
}

}  // namespace hy_wristlog::simulator
