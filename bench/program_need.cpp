#include "program_need.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string_view>
#include <thread>

namespace hy_wristlog {
namespace {

constexpr std::chrono::milliseconds BetweenLooks{2};

/// The most that a process had so far, in MiB; 0 for one that has ended. What wait4 tells would count the
/// memory of this program, which the other one begins with.
double peakOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  constexpr std::string_view Key = "VmHWM:";
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(Key)) return std::stod(line.substr(Key.size())) / 1024;
  return 0;
}

}  // namespace

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
  double most = 0;
  if (!begun) return {};
  while (::waitpid(child, &status, WNOHANG) == 0) {
    most = std::max(most, peakOf(child));
    std::this_thread::sleep_for(BetweenLooks);
  }
  if (status != 0) return {};
  return {most, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
}

}  // namespace hy_wristlog
