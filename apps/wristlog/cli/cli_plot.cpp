#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"

namespace wristlog {

namespace {

constexpr std::int32_t MostScale = 1'000'000;

}  // namespace

void addPlotCommand(CommandLine& cli) {
  auto options = std::make_shared<PlotOptions>();
  CLI::App* sub = cli.add("plot", "Draw saved recordings: actogram.svg and report.html",
                          [&cli, options] { return runPlot(cli.Common, *options); });
  sub->add_option("RECORDING", options->Places.Folders,
                  "Folders of recordings: config.ini and raw.bin, or raw.partial.bin")
      ->required()
      ->check(validFolder);
  CommandLine::addFolder(sub, options->Folder, options->Force,
                         "Folder for the pictures, of several recordings one in it for each; else the "
                         "recording's own");
  sub->add_option("--rows", options->RowHours,
                  "Hours in a row: 48 (as if not given), a day and the day after it, or 24")
      ->check(CLI::IsMember({24, 48}));
  sub->add_option("--start-hour", options->StartHour,
                  "When rows begin: 0 (as if not given), 12 or 18 o'clock")
      ->check(CLI::IsMember({0, 12, 18}));
  sub->add_option("--scale", options->Scale,
                  "Counts an epoch at the top of a row, so that recordings can be compared; else what fits "
                  "each recording")
      ->check(CLI::Range(1, MostScale));
  sub->add_option("--tz", options->Zone,
                  "Draw in the time of another zone: letters from 'zones', or a name as Europe/Paris; else "
                  "each logger's")
      ->check(notEmpty);
  sub->add_flag("--diagnostic", options->Diagnostic, "Go on where the data are questionable");
  CommandLine::addUnchecked(sub, options->Places.Files.Unchecked);
  sub->footer("Example: wristlog plot subject-17 --out pictures-17");
}

}  // namespace wristlog
