#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "commands/commands.h"

namespace wristlog {
namespace {

int runArguments(const std::vector<std::string>& arguments) {
  std::vector<std::string> words{"wristlog"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  CommandLine cli;
  addCommands(cli);
  return cli.run(static_cast<int>(words.size()), pointers.data());
}

}  // namespace

void addReplayCommand(CommandLine& cli) {
  auto options = std::make_shared<ReplayOptions>();
  CLI::App* sub = cli.add("replay", "Run the command of a recorded session again, with the recorded logger",
                          [&cli, options] { return runReplay(cli.Common, *options, runArguments); });
  sub->add_option("FILE", options->File, "A record that --record has made, or a session.log")
      ->required()
      ->check(validFile);
  sub->add_option("--out", options->Folder, "New folder for the command's files; else none are kept")
      ->check(validFolder);
  sub->add_flag("--console", cli.Common.Console, "Show what passes on the link on standard error");
  sub->footer(
      "Example: wristlog replay subject-17/session.log\n"
      "Time is simulated. Where the program now says something else it tells where, and ends with 1.");
}

}  // namespace wristlog
