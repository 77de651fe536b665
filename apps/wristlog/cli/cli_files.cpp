#include <CLI/CLI.hpp>
#include <memory>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "commands/file_commands.h"

namespace wristlog {
namespace {

/// Adds a folder, or several, and the file config.ini as alternatives, in the group that it returns.
template <class Folders>
CLI::Option_group* addConfigPlace(CLI::App* sub, Folders& folders, std::string& configFile,
                                  const char* description) {
  CLI::Option_group* group = sub->add_option_group("recording");
  CLI::Option* folder = group->add_option("RECORDING", folders, description)->check(validFolder);
  group->add_option("--config", configFile, "config.ini of the recording")
      ->excludes(folder)
      ->check(validFile);
  return group;
}

CLI::Option_group* addConfigPlace(CLI::App* sub, RecordingPlace& place) {
  return addConfigPlace(sub, place.Folder, place.ConfigFile,
                        "Folder of a recording, as 'wristlog retrieve' makes it");
}

/// Adds the file of the bytes to those alternatives.
void addRawFile(CLI::Option_group* group, RecordingPlace& place) {
  CLI::Option* config = group->get_option("--config");
  CLI::Option* raw = group->add_option("--raw", place.RawFile, "raw.bin, raw.partial.bin, or a raw data CSV")
                         ->check(validFile);
  raw->excludes(group->get_option("RECORDING"))->needs(config);
  config->needs(raw);
  group->require_option(1, 2);
}

}  // namespace

void addRecordingPlace(CLI::App* sub, RecordingPlace& place) {
  addRawFile(addConfigPlace(sub, place), place);
}

void addRecordingPlaces(CLI::App* sub, RecordingPlaces& places) {
  addRawFile(addConfigPlace(sub, places.Folders, places.Files.ConfigFile,
                            "Folders of recordings, as 'wristlog retrieve' makes them"),
             places.Files);
}

namespace {

CLI::Option* addOutput(CLI::App* sub, OutputOptions& output, const char* description) {
  sub->add_flag("--force", output.Force, "Overwrite what there is");
  return sub->add_option("--out", output.File, description)->required()->check(validFile);
}

/// Adds the alternatives of a saved configuration and a docked logger's.
void addConfigSource(CommandLine& cli, CLI::App* sub, ConfigOptions& options) {
  CLI::Option_group* group = addConfigPlace(sub, options.Place);
  CLI::Option* model =
      group
          ->add_option("--model", options.Model,
                       "Read the docked logger instead: vivid (Kestrin Vivid) or kestrin2 (Kestrin 2)")
          ->check(CLI::IsMember(VardenModels));
  cli.addLink(sub, VardenModels, model);
  for (const char* name : {"--simulate", "--console"}) sub->get_option(name)->needs(model);
  CLI::Option* dock = sub->get_option("--dock");
  dock->each([&cli](const std::string&) { cli.Common.UsesLink = true; });
  group->require_option(0, 1);
  sub->parse_complete_callback([group, model, dock] {
    const bool isSaved = !*model && group->count_all() > 0;
    if (*dock && isSaved) throw CLI::ExcludesError("--dock", "a saved configuration");
    if (!*dock && group->count_all() == 0) throw CLI::RequiredError("RECORDING, --config, --model or --dock");
  });
}

using RecordingCommand = int (*)(const CommonOptions&, const RecordingFileOptions&);

void addRecordingFile(CommandLine& cli, CLI::App* parent, const char* name, const char* description,
                      const char* outDescription, const char* example, RecordingCommand command) {
  auto options = std::make_shared<RecordingFileOptions>();
  CLI::App* sub = cli.add(
      name, description, [&cli, options, command] { return command(cli.Common, *options); }, parent);
  addRecordingPlace(sub, options->Place);
  CommandLine::addUnchecked(sub, options->Place.Unchecked);
  addOutput(sub, options->Output, outDescription);
  sub->footer(example);
}

void addReport(CommandLine& cli) {
  auto options = std::make_shared<ReportOptions>();
  CLI::App* sub = cli.add("report", "Write decoded recordings as reports for engineers",
                          [&cli, options] { return runReport(cli.Common, *options); });
  addRecordingPlaces(sub, options->Places);
  CommandLine::addUnchecked(sub, options->Places.Files.Unchecked);
  addOutput(sub, options->Output, "The CSV to write, of one recording; else report.csv in each one's folder")
      ->required(false);
  sub->parse_complete_callback([options] {
    const bool named = !options->Output.File.empty();
    if (!named && options->Places.Folders.empty()) throw CLI::RequiredError("--out");
    if (named && options->Places.Folders.size() > 1)
      throw CLI::ValidationError("--out", "names one file, and there are several recordings; leave it out");
  });
  sub->footer("Example: wristlog report subject-17 --out report.csv");
}

void addRaw(CommandLine& cli) {
  CLI::App* group = cli.addGroup("raw", "A recording's bytes as a readable file, and back");
  addRecordingFile(cli, group, "dump", "Write the bytes as a raw data CSV, one a line with its address",
                   "The CSV to write", "Example: wristlog raw dump subject-17 --out bytes.csv", runRawDump);
  auto options = std::make_shared<RawLoadOptions>();
  CLI::App* load = cli.add(
      "load", "Turn a raw data CSV back into the bytes",
      [&cli, options] { return runRawLoad(cli.Common, *options); }, group);
  load->add_option("DUMP", options->DumpFile, "The CSV")->required()->check(validFile);
  addOutput(load, options->Output, "The file for the bytes");
  load->footer("Example: wristlog raw load bytes.csv --out raw.bin");
}

using ConfigCommand = int (*)(const CommonOptions&, const ConfigOptions&);

void addConfigFile(CommandLine& cli, CLI::App* group, const char* name, const char* description,
                   const char* outDescription, const char* example, ConfigCommand command) {
  auto options = std::make_shared<ConfigOptions>();
  CLI::App* sub = cli.add(
      name, description, [&cli, options, command] { return command(cli.Common, *options); }, group);
  addConfigSource(cli, sub, *options);
  if (outDescription != nullptr) addOutput(sub, options->Output, outDescription);
  sub->footer(example);
}

void addConfigImport(CommandLine& cli, CLI::App* group) {
  auto options = std::make_shared<ConfigImportOptions>();
  CLI::App* sub = cli.add(
      "import", "Take the edited values of an INI file into a recording's configuration",
      [&cli, options] { return runConfigImport(cli.Common, *options); }, group);
  addConfigPlace(sub, options->Place)->require_option(1);
  sub->add_option("--ini", options->IniFile, "The edited file of 'wristlog config export'")
      ->required()
      ->check(validFile);
  addOutput(sub, options->Output, "The INI file to write, for 'wristlog decode --config'");
  sub->add_option("--image", options->Image.File, "Write the 256 bytes for the logger too")->check(validFile);
  sub->footer(
      "Example: wristlog config import subject-17 --ini edited.ini --out corrected.ini\n"
      "No logger is changed: 'wristlog configure' prepares one.");
}

void addConfig(CommandLine& cli) {
  CLI::App* group = cli.addGroup("config", "A configuration as text, to read, to edit and to take back");
  addConfigFile(cli, group, "show", "Show the configuration of a recording or a docked logger", nullptr,
                "Example: wristlog config show subject-17", runConfigShow);
  addConfigFile(cli, group, "export", "Write the configuration as an INI file that can be edited",
                "The INI file to write; in an existing one other lines stay",
                "Example: wristlog config export subject-17 --out edited.ini", runConfigExport);
  addConfigImport(cli, group);
  addConfigFile(cli, group, "image", "Write the 256 bytes that would be sent to the logger",
                "The file to write", "Example: wristlog config image --model vivid --out image.bin",
                runConfigImage);
}

}  // namespace

void addFileCommands(CommandLine& cli) {
  addRaw(cli);
  addReport(cli);
  addRecordingFile(cli, nullptr, "light-test", "Write a Kestrin 2's light test readings", "The CSV to write",
                   "Example: wristlog light-test bench --out test.csv", runLightTest);
  addRecordingFile(cli, nullptr, "krd", "Write the activity alone, kind KRD", "The file to write",
                   "Example: wristlog krd subject-17 --out subject-17.krd", runActivityOnly);
  addConfig(cli);
}

}  // namespace wristlog
