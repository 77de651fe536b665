#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "errors/Procedure.h"
#include "link/Form_Comm.h"

namespace hy_wristlog {

/// One of the Pendrel commands, which begin with three stars, and the plain part of its answer.
struct StarredCommand {
  std::string_view Text;
  std::int32_t Wait;   ///< milliseconds after the last character
  std::int32_t Lines;  ///< of the answer, each up to its carriage return
  bool HasPrompt;      ///< ">" follows the lines
};

namespace starred {
inline constexpr StarredCommand ReadSetup{"***C", 500, 8, true},  //
    ReadBlock{"***N", 0, 0, false},                               //
    ReadLocation{"***O", 500, 1, true},                           //
    WriteLocation{"***P", 500, 1, true},                          //
    ClearMemory{"***X", 12000, 1, true},                          //
    Reset{"***GU", 1000, 0, false},                               //
    Subject{"***B", 500, 0, false},                               //
    Epoch{"***A", 500, 0, false},                                 //
    StartDate{"***D", 500, 0, false},                             //
    StartTime{"***E", 500, 0, false},                             //
    BatteryDate{"***L", 500, 1, true},                            //
    Delay{"***W", 500, 2, true},                                  //
    DelayEpochs{"***H", 500, 1, false},                           //
    DelaySeconds{"***F", 500, 1, false};

inline constexpr std::int32_t Baud600 = 3, Baud4800 = 6, EightDataBits = 8, NoParity = 3, OneStopBit = 1;
inline constexpr std::int32_t Attempts = 3;        ///< at what may fail once or twice
inline constexpr std::int32_t ModeLocation = 109;  ///< where the steps model keeps its acquisition mode
inline constexpr std::uint8_t ActivityMode = 255, StepsMode = 'G';  ///< its two values there
inline constexpr const char* WrongChecksum = "Error Verifying Communications Checksum";

/// Whether the logger did not hear, heard something else, or did not answer.
constexpr bool isLinkFailure(std::int32_t number) {
  return number >= FailureNumber::NoCharacters && number <= FailureNumber::WrongCharacters;
}

/// The number of the failure when the logger did not hear `step`, or heard something else; otherwise 0.
template <class Step>
std::int32_t failureToSend(Step&& step) {
  try {
    step();
  } catch (const Failure& failure) {
    if (failure.Number == FailureNumber::NoCharacters || failure.Number == FailureNumber::WrongCharacters)
      return failure.Number;
    throw;
  }
  return 0;
}

/// The last four hexadecimal digits of the two's complement, in upper case.
std::string hexWord(std::int32_t value);
/// Whether the first four characters of `line` stand for `sum`, in hexadecimal.
bool standsFor(std::string_view line, std::int32_t sum);
/// The sum of the character codes.
std::int32_t checksumOf(std::string_view text);
}  // namespace starred

/// One call of a procedure that talks to a Pendrel logger, and its failure handling: failures of the link are
/// raised again at once.
class StarredProcedure {
 public:
  StarredProcedure(Form_Comm& link, const char* name);

  Procedure procedure;

  /// Types a command and waits for the echo of each character. Raises NoCharacters and WrongCharacters.
  void send(const StarredCommand& command, std::string_view argument = {}, bool carriageReturn = false);
  /// The same in up to three attempts, two seconds apart. The third failure keeps its number and gets `text`.
  void sendPatiently(const StarredCommand& command, const char* text);
  /// Raises NoCharacters and NoFinalCharacter.
  std::string readLine(char terminator = '\r');
  /// Sends a command and reads the lines of its answer, and one more when a checksum is wanted.
  std::vector<std::string> ask(const StarredCommand& command, std::string_view argument = {},
                               bool withChecksum = false);
  /// Waits the two seconds that the logger needs after its longer answers. No events are served meanwhile.
  void rest();

  /// Raises a failure with this procedure as its source.
  void raise(std::int32_t number, const char* text);
  void raise(std::int32_t number, const char* sourceProcedure, const char* text);

 private:
  void type(const StarredCommand& command, std::string_view argument, bool carriageReturn);

  Form_Comm& link_;
  const char* name_;
};

}  // namespace hy_wristlog
