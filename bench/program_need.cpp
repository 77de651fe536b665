#include "program_need.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

namespace hy_wristlog {

Need needOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), WRISTLOG_PROGRAM);
  std::vector<char*> raw;
  for (std::string& argument : arguments) raw.push_back(argument.data());
  raw.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const auto start = std::chrono::steady_clock::now();
  const bool begun = posix_spawn(&child, WRISTLOG_PROGRAM, &actions, nullptr, raw.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  int status = -1;
  rusage usage{};
  if (!begun || wait4(child, &status, 0, &usage) != child || status != 0) return {};
  return {static_cast<double>(usage.ru_maxrss) / 1024,
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
}

}  // namespace hy_wristlog
