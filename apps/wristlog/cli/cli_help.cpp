#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "words/say.h"

namespace wristlog {

void addHelpCommand(CommandLine& cli) {
  auto names = std::make_shared<std::vector<std::string>>();
  CLI::App* sub = cli.add("help", "What a command does, and its options", [names, &cli] {
    const CLI::App& command = cli.named(*names);
    std::string path = "wristlog";
    for (const std::string& name : *names) path += " " + name;
    say().lines(command.get_formatter()->make_help(&command, path, CLI::AppFormatMode::Normal), "");
    return Good;
  });
  sub->add_option("command", *names, "The command, such as 'status' or 'legacy status'");
}

}  // namespace wristlog
