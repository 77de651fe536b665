#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "cli/participants.h"

namespace wristlog {

void addHarvestCommand(CommandLine& cli) {
  auto options = std::make_shared<HarvestOptions>();
  CLI::App* sub =
      cli.add("harvest", "Retrieve from all docks at once what was not retrieved before", [&cli, options] {
        if (!options->ListFile.empty())
          options->Participants = participantsIn(options->ListFile, options->Attempts);
        return runHarvest(cli.Common, *options);
      });
  sub->add_option("--out", options->Folder, "Folder in which each recording gets a folder of its own")
      ->required()
      ->check(validFolder);
  sub->add_option("--configure", options->ListFile,
                  "Then configure the loggers for the participants of this list, a CSV")
      ->check(validFile);
  sub->add_flag("--ignore-warnings", options->IgnoreWarnings, "Go on where a warning would end a retrieval");
  CommandLine::addAttempts(sub, options->Attempts);
  cli.addDock(sub);
  sub->add_flag("--redact", cli.Common.Redact, "Leave who wears a logger out of the record of what failed");
  sub->footer(
      "Example: wristlog harvest --out study-4\n"
      "It ends the running recordings, as 'retrieve' does. With --json it prints an event a line.");
}

}  // namespace wristlog
