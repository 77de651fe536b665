#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"

namespace wristlog {

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
  sub->add_flag("--diagnostic", options->Diagnostic, "Go on where the data are questionable");
  CommandLine::addUnchecked(sub, options->Places.Files.Unchecked);
  sub->footer("Example: wristlog plot subject-17 --out pictures-17");
}

}  // namespace wristlog
