#pragma once

#include <functional>
#include <string>
#include <vector>

#include "session/options.h"

namespace wristlog {

struct ReplayOptions {
  std::string File, Folder;
};

/// Runs a command of the program with these arguments, "wristlog" before them; gives its exit status.
using CommandRunner = std::function<int(const std::vector<std::string>&)>;

int runReplay(const CommonOptions& common, const ReplayOptions& options, const CommandRunner& run);

}  // namespace wristlog
