#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/dockable.h"
#include "simulator/fault.h"
#include "simulator/recorder.h"
#include "simulator/xmodem.h"

namespace hy_wristlog::simulator {

/// What is wrong with a logger.
struct LoggerFaults {
  Fault LoseEcho{}, AlterEcho{}, DelayEcho{};  ///< count echoed characters, the carriage return too
  nanoseconds EchoDelay = std::chrono::milliseconds{1500};
  Fault BadLineChecksum{};   ///< counts value lines
  Fault ZeroLineChecksum{};  ///< the same; the line says #0000
  Fault GarbledClock{};      ///< counts answers to "show clock time"; the value is no number
  Fault IgnoreCommand{};     ///< counts carriage returns; neither echoed nor obeyed
  Fault RefuseClock{};       ///< counts "clock time"; answered as if obeyed, but the clock keeps its time
  Fault MisstoreConfig{};    ///< counts written config blocks; one byte is stored wrong
  std::size_t MisstoredOffset = 240;  ///< where, counted in the whole block
  Fault BadConfigChecksum{};          ///< counts sent config blocks
  bool Silent = false;                ///< neither hears nor answers
  TransferFaults Transfer;
};

/// A logger's line-oriented shell. Printable characters and the carriage return are echoed; a value is
/// answered as a line with its checksum; ">" is the prompt. There is no line feed. While a block is
/// transferred the shell does not listen. A transfer that was given up ends without an answer.
class VardenShell {
 public:
  using Output = std::function<void(std::span<const std::uint8_t>, nanoseconds)>;

  using Tell = std::function<void(Notice)>;

  VardenShell(Timeline& timeline, LoggerParts& parts, Recorder& recorder, LoggerFaults& faults,
              std::string displayFirmware, Output output, Tell tell);

  void receive(std::uint8_t byte);
  /// Drops the typed line and any transfer, without an answer.
  void restart();

  /// The lines that came in whole, oldest first.
  const std::vector<std::string>& commands() const { return commands_; }
  void forgetCommands() { commands_.clear(); }
  std::uint64_t packetsSent() const { return sender_.packetsSent(); }
  bool busy() const { return state_ != State::Prompt; }
  bool erasing() const { return state_ == State::Erasing; }
  void persist(SavedState& state);

 private:
  enum class State { Prompt, Sending, Receiving, Erasing };

  void type(std::uint8_t byte);
  void echo(std::uint8_t byte);
  void obey(const std::string& line);
  bool answerValue(std::string_view line);
  bool change(std::string_view line);
  bool transfer(std::string_view line);
  bool debugMemory(std::string_view line);
  void say(std::string_view text);
  void sayValue(const std::string& value);
  void prompt() { say(">"); }
  std::string batteryLine() const;
  std::string clockMode() const;
  void sendConfig();
  void storeConfig(bool complete, std::span<const std::uint8_t> data);
  bool setClock(std::int64_t seconds);
  bool setStop(std::int64_t seconds);
  bool setPointer(std::int64_t address);
  bool setClockMode(std::int64_t mode);
  void erase();
  void erased();

  Timeline& timeline_;
  LoggerParts& parts_;
  Recorder& recorder_;
  LoggerFaults& faults_;
  std::string displayFirmware_;
  Output output_;
  Tell tell_;
  bool sendsRecording_ = false;
  XmodemSender sender_;
  XmodemReceiver receiver_;
  Alarm eraseDone_;
  State state_ = State::Prompt;
  std::string typed_;
  Moment lastTyped_{};
  std::vector<std::string> commands_;
};

}  // namespace hy_wristlog::simulator
