#pragma once

#include <cstdint>
#include <string>

namespace wristlog {

/// What every command understands.
struct CommonOptions {
  bool AsJson = false;
  bool Console = false;
  std::string Simulate;  ///< whom `--simulate` names, or empty for the machine's docks
};

/// Where the Pendreader is.
struct ReaderOptions {
  std::int16_t Port = 0;  ///< 0: the remembered one
  bool Search = false;
};

enum ExitStatus : int { Good = 0, Unsuccessful = 1, WrongUsage = 2 };

}  // namespace wristlog
