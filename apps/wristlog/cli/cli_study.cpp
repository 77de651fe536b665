#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <thread>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "commands/cmd_study.h"

namespace wristlog {

void addStudyCommand(CommandLine& cli) {
  constexpr int MostJobs = 1024;
  auto options = std::make_shared<StudyOptions>();
  options->Jobs = std::max(1U, std::thread::hardware_concurrency());
  CLI::App* sub =
      cli.add("study", "Decode every recording below a folder into one table of recordings and one of series",
              [&cli, options] { return runStudy(cli.Common, *options); });
  sub->add_option("DIR", options->Folder, "Folder below which the recordings are")
      ->required()
      ->check(validFolder);
  sub->add_option("--out", options->Out, "Folder for the tables; only what has changed is written again")
      ->required()
      ->check(validOutputFolder);
  sub->add_option("--jobs", options->Jobs, "How many recordings are decoded at a time; else one a processor")
      ->check(CLI::Range(1, MostJobs));
  sub->add_flag("--force", options->Force,
                "Decode all again, and take an output folder with other files, or of another study");
  sub->footer("Example: wristlog study recordings --out study");
}

}  // namespace wristlog
