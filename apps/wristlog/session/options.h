#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace wristlog {

class SessionRecorder;

/// What every command understands.
struct CommonOptions {
  bool AsJson = false;
  bool Console = false;
  bool Redact = false;                 ///< records leave out who wears the logger
  std::string Simulate;                ///< the logger that `--simulate` names; empty for the machine's docks
  std::string Record;                  ///< the file of `--record`, or empty
  std::vector<std::string> Arguments;  ///< the command's, as they were given
  std::shared_ptr<SessionRecorder> Recorder;  ///< null when nothing is to be recorded
};

/// Which port the Pendreader is on.
struct ReaderOptions {
  std::int16_t Port = 0;  ///< 0: the remembered one
  bool Search = false;
};

enum ExitStatus : int { Good = 0, Unsuccessful = 1, WrongUsage = 2 };

}  // namespace wristlog
