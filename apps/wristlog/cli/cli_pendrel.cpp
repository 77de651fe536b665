#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "commands/pendrel_commands.h"

namespace wristlog {
namespace {

/// A command of the group "legacy", with the options that all of them have.
class PendrelCommand {
 public:
  PendrelCommand(CommandLine& cli, CLI::App* group, const char* name, const char* description,
                 const std::function<int(const ReaderOptions&)>& run)
      : app(cli.add(
            name, description, [run, reader = reader_] { return run(*reader); }, group)) {
    cli.addLink(app, {"pendrel13", "pendrel14", "pendrel27"});
  }

  void addReader() const {
    CLI::Option* port =
        app->add_option("--port", reader_->Port,
                        "The Pendreader's COM port, also from now on; else the remembered one")
            ->check(CLI::Range(1, 32767))
            ->excludes(app->get_option("--dock"));
    app->add_flag("--search", reader_->Search, "Search the Pendreader first, and remember its port")
        ->excludes(port);
  }

 private:
  std::shared_ptr<ReaderOptions> reader_ = std::make_shared<ReaderOptions>();

 public:
  CLI::App* app;
};

void addConfigure(CommandLine& cli, CLI::App* group) {
  const SubjectLimits limits{23, validPendrelBirthDate, validPendrelSize};
  auto options = std::make_shared<PendrelConfigureOptions>();
  const PendrelCommand command(cli, group, "configure", "Prepare the logger for a recording; takes a minute",
                               [&cli, options](const ReaderOptions& reader) {
                                 return runPendrelConfigure(cli.Common, reader, *options);
                               });
  command.addReader();
  command.app->add_option("--mode", options->Mode, "1 activity, 2 activity and steps")
      ->required()
      ->check(CLI::Range(1, 2));
  command.app->add_option("--epoch", options->EpochLength, "Seconds a value: 15, 30 or 60")
      ->required()
      ->check(CLI::IsMember({15, 30, 60}));
  CommandLine::addSubject(command.app, options->Subject, limits);
  command.app->add_option(
      "--zone", options->Zone,
      "Three letters, see 'wristlog zones', or a name as Europe/Paris; else the machine's zone");
  command.app->add_flag("--no-daylight", options->NoDaylight, "Do not adjust for daylight time");
  command.app
      ->add_option("--start", options->Start,
                   "Local start, yyyy-mm-ddThh:mm, within 32896 epochs; else as soon as possible")
      ->check(validLoggerTime);
  command.app->add_flag("--keep-memory", options->KeepMemory,
                        "Do not clear the memory first; the new recording writes over it all the same");
  CommandLine::addErase(command.app, options->Erase);
  command.app->footer(
      "Example: wristlog legacy configure --mode 1 --epoch 30 --identity \"Subject 17\" --gender F\n"
      "A recording that you have not retrieved is not erased, unless --erase is given.");
}

void addRetrieve(CommandLine& cli, CLI::App* group) {
  auto options = std::make_shared<PendrelRetrieveOptions>();
  const PendrelCommand command(cli, group, "retrieve", "Read and decode the recording; takes some minutes",
                               [&cli, options](const ReaderOptions& reader) {
                                 return runPendrelRetrieve(cli.Common, reader, *options);
                               });
  command.addReader();
  CommandLine::addFolder(command.app, options->Folder, options->Force)->required();
  command.app->add_flag("--repair", options->Repair, "Fill gaps in the set-up in place of refusing it");
  command.app->footer(
      "Example: wristlog legacy retrieve --out subject-17\n"
      "The recording stays in the logger, which goes on recording, until it is configured again.");
}

void addBatteryDate(CommandLine& cli, CLI::App* group) {
  auto date = std::make_shared<std::string>();
  const PendrelCommand command(
      cli, group, "battery-date", "Tell the logger when its battery was changed",
      [&cli, date](const ReaderOptions& reader) { return runPendrelBatteryDate(cli.Common, reader, *date); });
  command.addReader();
  command.app->add_option("date", *date, "yyyy-mm-dd, from 1930 to 2029; else today")->check(validPendrelDay);
}

void addExport(CommandLine& cli, CLI::App* group) {
  auto options = std::make_shared<PendrelExportOptions>();
  const PendrelCommand command(cli, group, "export-krc",
                               "Retrieve, and write the recording as a KRC text file",
                               [&cli, options](const ReaderOptions& reader) {
                                 return runPendrelExport(cli.Common, reader, *options);
                               });
  command.addReader();
  command.app->add_option("file", options->File, "The file to write")->required()->check(validFile);
  command.app->add_flag("--force", options->Force, "Overwrite the file");
  command.app->add_flag("--repair", options->Repair, "Fill gaps in the set-up in place of refusing it");
}

}  // namespace

void addPendrelCommands(CommandLine& cli) {
  CLI::App* group = cli.addGroup("legacy", "The older Pendrel loggers in a Pendreader");
  const PendrelCommand findPort(cli, group, "find-port", "Search the Pendreader's port and remember it",
                                [&cli](const ReaderOptions&) { return runPendrelFindPort(cli.Common); });
  const PendrelCommand status(
      cli, group, "status", "What the logger in the Pendreader is and what it holds",
      [&cli](const ReaderOptions& reader) { return runPendrelStatus(cli.Common, reader); });
  status.addReader();
  addConfigure(cli, group);
  addRetrieve(cli, group);
  addBatteryDate(cli, group);
  addExport(cli, group);
}

}  // namespace wristlog
