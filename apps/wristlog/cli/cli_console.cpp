#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"

namespace wristlog {

void addConsoleCommand(CommandLine& cli) {
  auto options = std::make_shared<ConsoleOptions>();
  CLI::App* sub = cli.add("console", "The Communications Debugger: watch the link, full-screen",
                          [&cli, options] { return runConsole(cli.Common, *options); });
  cli.addModel(sub, options->Model);
  sub->add_option("--workflow", options->Workflow,
                  "What makes the traffic: status (as if not given) or retrieve")
      ->check(CLI::IsMember({"status", "retrieve"}));
  CommandLine::addFolder(sub, options->Folder, options->Force,
                         "Folder for a retrieved recording's files; else it is read, but not kept");
  sub->add_flag("--ignore-warnings", options->IgnoreWarnings, "Go on where a warning would end a retrieval");
  cli.addRecord(sub);
  cli.addDock(sub);
  sub->add_option("--simulate", cli.Common.Simulate, "A simulated dock with a worn logger")
      ->check(CLI::IsMember(VardenModels));
  sub->add_option("--speed", options->Speed,
                  "How many times as fast as in life simulated time passes (else once); 0: as fast as it can")
      ->check(validSpeed);
  sub->footer(
      "Example: wristlog console --model vivid --simulate vivid\n"
      "Arrows, PgUp, PgDn, Home, End and the mouse move; Space, Shift with arrows, and dragging select.\n"
      "Ctrl-C stops the workflow, twice ends at once. Nothing that is typed reaches the logger.");
}

}  // namespace wristlog
