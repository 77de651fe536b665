#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/dockable.h"
#include "simulator/fault.h"
#include "simulator/pendrel_parts.h"
#include "simulator/pendrel_recorder.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// Faults of single commands, by the first letter after the stars; a carriage return stands for the prompt.
using CommandFaults = std::map<char, Fault>;

/// What is wrong with a Pendrel logger. `CommandFaults` count the commands that came in whole.
struct PendrelFaults {
  Fault LoseEcho{}, AlterEcho{}, DelayEcho{};  ///< count echoed characters, the carriage return too
  nanoseconds EchoDelay = std::chrono::milliseconds{1500};
  bool Silent = false;        ///< neither hears nor answers
  CommandFaults Unheeded;     ///< echoed, but neither obeyed nor answered
  CommandFaults Feigned;      ///< answered, but not obeyed: a clear that clears nothing, a date not taken
  CommandFaults BadChecksum;  ///< of the answers to C, O, W and N
  Fault WrongDelayEcho{};     ///< counts W: the line repeats a wrong digit, with the checksum that it had
  Fault ShortBlock{}, LongBlock{};        ///< count blocks
  std::size_t Shortfall = 1, Excess = 7;  ///< bytes that are missing, or too many
  /// The time that the logger gives the PC to change its speed.
  nanoseconds BlockDelay = std::chrono::seconds{1};
  /// Sent in place of lines 0 to 7 of the setup; the checksum is that of the altered text.
  std::map<std::size_t, std::string> SetupLines;
};

/// The starred commands. Every character is echoed as itself; a command is obeyed with its last character.
/// One with a wrong letter or digit, of another model, or with a meaningless number is dropped at that
/// character, without an answer. What was typed is forgotten after a pause of 1800 ms. Lines end with a
/// carriage return; there is no line feed.
class PendrelShell {
 public:
  /// The logger's end of the line.
  struct Line {
    std::function<void(std::span<const std::uint8_t>, nanoseconds)> Send;
    std::function<void(std::int32_t)> SetBaud;
  };

  using Tell = std::function<void(Notice)>;

  PendrelShell(Timeline& timeline, PendrelParts& parts, PendrelRecorder& recorder, PendrelFaults& faults,
               Line line, Tell tell);

  void receive(std::uint8_t byte);
  /// Drops the typed command and a block on its way, without an answer; a running clear goes on.
  void cutOff();
  /// Does the same and ends a running clear too.
  void restart();
  /// The commands that came in whole, oldest first; the prompt is an empty one.
  const std::vector<std::string>& commands() const { return commands_; }
  void forgetCommands() { commands_.clear(); }
  /// True while the logger does not listen: it clears its memory, restarts or sends a block.
  bool busy() const { return task_ != Task::None; }
  bool clearsOrRestarts() const { return task_ == Task::Clear || task_ == Task::Restart; }
  void persist(SavedState& state);
  /// The lines of the setup, without their ends.
  std::vector<std::string> setupLines() const;

 private:
  enum class Task { None, StartBlock, EndBlock, Clear, Restart };

  void carriageReturn();
  void echo(std::uint8_t byte);
  void complete();
  bool makesSense(char letter, std::string_view arguments) const;
  void obey(char letter, std::string_view arguments);
  void answer(char letter, std::string_view arguments);
  void say(std::string_view text);
  unsigned told(char letter, unsigned sum);
  void answerSetup();
  void answerLocation(std::string_view address);
  void answerDelay(std::string_view digits);
  void begin(Task task, nanoseconds duration);
  void due();
  void sendBlock();
  bool holdsMoreBlocks() const;

  Timeline& timeline_;
  PendrelParts& parts_;
  PendrelRecorder& recorder_;
  PendrelFaults& faults_;
  Line line_;
  Tell tell_;
  Alarm alarm_;
  Task task_ = Task::None;
  std::string typed_;
  Moment lastTyped_{};
  std::string epochWord_;  ///< of an H command, kept for the F that follows
  std::size_t block_ = 0;  ///< the one that goes out next
  std::vector<std::string> commands_;
};

}  // namespace hy_wristlog::simulator
