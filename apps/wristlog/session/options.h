#pragma once

#include <cstdint>
#include <string>

namespace wristlog {

/// What every command understands.
struct CommonOptions {
  bool AsJson = false;
  bool Console = false;
  std::string Simulate;  ///< the logger that `--simulate` names; empty for the machine's docks
};

/// Which port the Pendreader is on.
struct ReaderOptions {
  std::int16_t Port = 0;  ///< 0: the remembered one
  bool Search = false;
};

enum ExitStatus : int { Good = 0, Unsuccessful = 1, WrongUsage = 2 };

}  // namespace wristlog
