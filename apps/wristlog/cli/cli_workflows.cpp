#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "varden/logging_modes.h"

namespace wristlog {
namespace {

constexpr const char* DemoFolder = "demo-recording";

void addDemo(CommandLine& cli) {
  auto options = std::make_shared<DemoOptions>();
  CLI::App* sub =
      cli.add("demo", "A simulated logger: configure it, wear it for a week, retrieve; takes seconds",
              [&cli, options] {
                options->OwnFolder = options->Folder.empty();
                if (options->OwnFolder) options->Folder = DemoFolder;
                return runDemo(cli.Common, *options);
              });
  CommandLine::addFolder(sub, options->Folder, options->Force,
                         "Folder for the recording's files; else demo-recording, replaced by each demo");
  sub->add_flag("--console", cli.Common.Console, "Show what passes on the link on standard error");
}

void addDocks(CommandLine& cli) {
  auto probe = std::make_shared<bool>(false);
  CLI::App* sub = cli.add("docks", "The docks that are connected, their names and ports",
                          [&cli, probe] { return runDocks(cli.Common, *probe); });
  sub->add_flag("--probe", *probe, "Ask each dock who sits in it, all at the same time");
  cli.addLink(sub);
}

void addStatus(CommandLine& cli) {
  auto model = std::make_shared<std::string>();
  CLI::App* sub = cli.add("status", "What state the docked logger is in",
                          [&cli, model] { return runStatus(cli.Common, *model); });
  cli.addModel(sub, *model);
  cli.addLink(sub);
}

void addConfigure(CommandLine& cli) {
  auto options = std::make_shared<ConfigureOptions>();
  CLI::App* sub = cli.add("configure", "Prepare the docked logger for a recording",
                          [&cli, options] { return runConfigure(cli.Common, *options); });
  cli.addModel(sub, options->Model);
  addConfigureOptions(sub, *options);
  CommandLine::addErase(sub, options->Erase);
  CommandLine::addAttempts(sub, options->Attempts);
  cli.addLink(sub);
  sub->footer(
      "Example: wristlog configure --model vivid --mode 5 --epoch 60 --identity \"Subject 17\" --gender F\n"
      "A recording that you have not retrieved is not erased, unless --erase is given.");
}

void addRetrieve(CommandLine& cli) {
  auto options = std::make_shared<RetrieveOptions>();
  CLI::App* sub = cli.add("retrieve", "End the docked logger's recording, read and decode it",
                          [&cli, options] { return runRetrieve(cli.Common, *options); });
  cli.addModel(sub, options->Model);
  CommandLine::addFolder(sub, options->Folder, options->Force)->required();
  sub->add_flag("--ignore-warnings", options->IgnoreWarnings, "Go on where a warning would end it");
  CommandLine::addAttempts(sub, options->Attempts);
  cli.addLink(sub);
  sub->footer(
      "Example: wristlog retrieve --model vivid --out subject-17\n"
      "It ends the running recording: the logger records again when it is configured. What it has recorded "
      "stays\nin it until then.");
}

void addDecode(CommandLine& cli) {
  auto options = std::make_shared<DecodeOptions>();
  CLI::App* sub = cli.add("decode", "Decode saved recordings again",
                          [&cli, options] { return runDecode(cli.Common, *options); });
  addRecordingPlaces(sub, options->Places);
  CommandLine::addFolder(
      sub, options->Folder, options->Force,
      "Folder for the recording's files, of several recordings one in it for each; - for the "
      "series on standard output; else none are written",
      validFolder);
  sub->add_flag("--diagnostic", options->Diagnostic, "Go on where the data are questionable");
  CommandLine::addUnchecked(sub, options->Places.Files.Unchecked);
  sub->add_option("--now", options->Now,
                  "Decode as if it were this time (UTC, yyyy-mm-ddThh:mm:ss); else that of the retrieval")
      ->check(validDate);
  sub->parse_complete_callback([&cli, options] {
    if (options->Folder == StandardOutput && cli.Common.AsJson) throw CLI::ExcludesError("--out -", "--json");
  });
  sub->footer("Example: wristlog decode subject-17 subject-18 --out - > series.csv");
}

}  // namespace

void addConfigureOptions(CLI::App* sub, ConfigureOptions& options) {
  const SubjectLimits limits{64, validDate, validSize};
  sub->add_option("--mode", options.Mode,
                  "1 activity, 2 light (Vivid: colours), 3 both; Vivid also 4 lux, 5 activity and lux")
      ->required()
      ->check(CLI::Range(1, int{hy_wristlog::highestOfferedMode()}));
  sub->add_option("--epoch", options.EpochLength, "Seconds a value: 15, 30, 60, 120 or 300")
      ->required()
      ->check(CLI::IsMember({15, 30, 60, 120, 300}));
  CommandLine::addSubject(sub, options.Subject, limits);
  sub->add_option("--zone", options.Zone,
                  "Three letters, see 'wristlog zones', or a name as Europe/Paris; else the machine's zone");
  sub->add_flag("--no-daylight", options.NoDaylight, "Do not adjust for daylight time");
  sub->add_option("--set-time", options.SetTime, "Local time for the logger's clock; else now")
      ->check(validLoggerTime);
  sub->add_option("--start", options.Start, "Local start, yyyy-mm-ddThh:mm; else as soon as possible")
      ->check(validLoggerTime);
  sub->add_option("--end", options.End, "Local end; else never (2038 when there is a start)")
      ->check(validLoggerTime);
  sub->add_option("--date-format", options.DateFormat, "Of the logger's display, if it has one")
      ->check(CLI::IsMember({"mmdd", "ddmm"}));
  sub->add_option("--time-format", options.TimeFormat, "Of the logger's display, if it has one")
      ->check(CLI::IsMember({"off", "12", "24"}));
}

void addWorkflowCommands(CommandLine& cli) {
  addDemo(cli);
  addDocks(cli);
  addStatus(cli);
  addConfigure(cli);
  addRetrieve(cli);
  addHarvestCommand(cli);
  addDecode(cli);
  cli.add("zones", "The time zones and their abbreviations; * is the machine's",
          [&cli] { return runZones(cli.Common); });
}

}  // namespace wristlog
