#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "errors/Procedure.h"
#include "link/Form_Comm.h"

namespace hy_wristlog {

/// A command of the loggers' shell and the lines of its answer. The times, in milliseconds, say how long a
/// line may stay silent. 0 stands for a line that is not read.
struct ShellCommand {
  std::string_view Text;
  std::int32_t EchoSilence;    ///< the rest of the echo, up to its carriage return
  std::int32_t ValueSilence;   ///< a line with a value, up to its carriage return
  std::int32_t PromptSilence;  ///< the prompt, ">"
};

namespace shell {
inline constexpr ShellCommand Wake{"", 200, 0, 200},  //
    ShowVersion{"show ver", 1000, 1000, 1000},        //
    ShowConfig{"show config", 200, 0, 0},             //
    ShowBattery{"show battery", 500, 500, 500},       //
    ShowClockTime{"show clock time", 200, 200, 200},  //
    ShowClockMode{"show clock mode", 200, 200, 200},  //
    ShowData{"show data", 200, 0, 0},                 //
    ClockTime{"clock time ", 200, 0, 200},            //
    ClockMode{"clock mode ", 200, 0, 200},            //
    AcqStop{"acq stop ", 200, 0, 200},                //
    AcqPointer{"acq dptr ", 200, 0, 200},             //
    DataAvail{"data avail ", 200, 0, 200},            //
    Sleep{"sleep ", 200, 0, 200},                     //
    MemoryErase{"memory erase", 200, 0, 40000},       //
    Config{"config", 0, 0, 0},                        //
    ReadMemory{"debug mem r 0x", 200, 200, 200},      //
    WriteMemory{"debug mem w 0x", 200, 0, 200};

inline constexpr std::int32_t Baud57600 = 13, EightDataBits = 8, NoParity = 3, TwoStopBits = 3;
/// For a transfer's timeout: the link's own, `TransferTimeout` in link/XmodemSession.h.
inline constexpr std::int32_t LinkTimeout = -1;
}  // namespace shell

/// Upper case, without leading zeros.
std::string hexadecimal(std::uint32_t value);

/// One call of a procedure that talks to the shell. It handles failures and counts the sends.
class ShellProcedure {
 public:
  ShellProcedure(Form_Comm& link, const char* name)
      : procedure{"Class_VardenLogger", name}, sendFailureProcedure{name}, link_{link}, name_{name} {}

  Procedure procedure;
  /// The procedure that a failure to send names as its source.
  const char* sendFailureProcedure;

  /// Types a command. A command that is not echoed, or echoed wrong, is typed again after a pause. The
  /// procedure has three sends for all its commands; then this raises NoCharacters or WrongCharacters. Other
  /// failures of a send are ignored, since the missing answer tells of them.
  void send(std::string_view command, const std::function<void()>& beforeRepeat = {});

  /// Reads up to `terminator`. Raises NoCharacters and NoFinalCharacter.
  std::string readLine(char terminator, std::int32_t silence);

  /// Sends a command, reads its answer and returns its value line, which is empty when the command has none.
  std::string ask(const ShellCommand& command, std::string_view argument = {});

  /// Asks until `accepts` takes the value line, three times at most. Raises `number` after the third.
  void askUntil(const ShellCommand& command, std::string_view argument, std::int32_t number, const char* text,
                const std::function<bool(std::string& line)>& accepts);

  /// Raises a failure with this procedure as its source.
  void raise(std::int32_t number, const char* text);

 private:
  Form_Comm& link_;
  const char* name_;
  std::int32_t failedSends_ = 0;
};

}  // namespace hy_wristlog
