#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/enumerations.h"

namespace wristlog {

class SessionRecorder;

/// What every command understands.
struct CommonOptions {
  bool AsJson = false;
  bool Console = false;
  bool Redact = false;    ///< records leave out who wears the logger
  std::string Simulate;   ///< the logger that `--simulate` names; empty for the machine's docks
  bool UsesLink = false;  ///< the command talks to a logger
  std::string Dock;       ///< of `--dock`, or empty
  /// That of `--model`; a Pendreader's for the commands of its loggers.
  hy_wristlog::enmLoggerPointer Model = hy_wristlog::LggrPntr_None;
  /// Hears the progress in place of the terminal; empty for the terminal.
  std::function<void(const std::string&)> Progress;
  std::string Record;                         ///< the file of `--record`, or empty
  std::vector<std::string> Arguments;         ///< the command's, as they were given
  std::shared_ptr<SessionRecorder> Recorder;  ///< null when nothing is to be recorded
};

/// Which port the Pendreader is on.
struct ReaderOptions {
  std::int16_t Port = 0;  ///< 0: the remembered one
  bool Search = false;
};

enum ExitStatus : int { Good = 0, Unsuccessful = 1, WrongUsage = 2 };

}  // namespace wristlog
