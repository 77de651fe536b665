#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/cli_checks.h"
#include "commands/commands.h"
#include "hy_wristlog/failure.h"

namespace CLI {
class App;
class Error;
class Option;
class ExtrasError;
class ParseError;
}  // namespace CLI

namespace wristlog {

/// What --model and --simulate call the models.
inline const std::vector<std::string> VardenModels{"vivid", "kestrin2"};

/// The limits of a subject's values that a family of loggers can keep.
struct SubjectLimits {
  std::size_t IdentityLength;
  std::string (*BirthDate)(const std::string&);
  std::string (*Size)(const std::string&);
};

/// The command line. Groups of commands add themselves to it, and `run` runs the one that was asked for.
class CommandLine {
 public:
  CommandLine();
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// Runs the program and returns its exit status.
  int run(int argc, char** argv);

  CommonOptions Common;

  /// Adds a command to the program, or to the group of commands `parent`.
  CLI::App* add(const char* name, const char* description, std::function<int()> command,
                CLI::App* parent = nullptr);
  /// Adds a group: a name before commands, as in "wristlog legacy status".
  CLI::App* addGroup(const char* name, const char* description);
  /// The command that has these names, as in {"legacy", "status"}; without names the program itself. Raises
  /// CLI::ParseError for a command that there is not.
  const CLI::App& named(const std::vector<std::string>& names) const;

  /// "--record" and "--redact": from now on the command `sub`, or with `when` only when this option is given,
  /// is one whose session can be recorded.
  void addRecord(CLI::App* sub, CLI::Option* when = nullptr);
  /// The options of a command that talks to a logger; `when` as above.
  void addLink(CLI::App* sub, const std::vector<std::string>& simulated = VardenModels,
               CLI::Option* when = nullptr);
  /// "--dock", for commands that work with one dock.
  CLI::Option* addDock(CLI::App* sub);
  void addModel(CLI::App* sub, std::string& model);
  static void addAttempts(CLI::App* sub, std::int16_t& attempts);
  static void addSubject(CLI::App* sub, SubjectOptions& subject, const SubjectLimits& limits);
  /// Adds "--erase", for commands that erase what a logger has recorded.
  static void addErase(CLI::App* sub, bool& erase);
  /// Adds "--out", the folder for a recording's files, and "--force".
  static CLI::Option* addFolder(CLI::App* sub, std::string& folder, bool& force,
                                const char* description = "Folder for the recording's files",
                                const ArgumentCheck& check = validOutputFolder);
  /// Adds "--unchecked", for commands that read a saved recording.
  static void addUnchecked(CLI::App* sub, bool& unchecked);

 private:
  int parseAndRun(int argc, char** argv);
  int runCommand();
  int show(const CLI::Error& answer) const;
  int refuse(const CLI::ParseError& error, int argc, char** argv) const;
  /// The command whose options are read, as far as the command line could be parsed.
  const CLI::App& reached() const;
  CLI::ExtrasError unknownWords() const;
  int tellFailure(const hy_wristlog::Failure& failure) const;

  std::unique_ptr<CLI::App> app_;
  std::function<int()> command_;
};

/// Adds a recording's folder and its two files as alternatives.
void addRecordingPlace(CLI::App* sub, RecordingPlace& place);
/// Adds folders of recordings and the two files of one as alternatives.
void addRecordingPlaces(CLI::App* sub, RecordingPlaces& places);

/// The options of `configure` that tell who wears a logger and how it records.
void addConfigureOptions(CLI::App* sub, ConfigureOptions& options);

// The groups of commands, each in cli_<group>.cpp: a new command is added there, and does its work in
// commands/cmd_<name>.cpp.
void addWorkflowCommands(CommandLine& cli);
void addHarvestCommand(CommandLine& cli);
void addFileCommands(CommandLine& cli);
void addPlotCommand(CommandLine& cli);
void addStudyCommand(CommandLine& cli);
void addConsoleCommand(CommandLine& cli);
void addPendrelCommands(CommandLine& cli);
void addSimulateCommand(CommandLine& cli);
void addReplayCommand(CommandLine& cli);
void addHelpCommand(CommandLine& cli);
void addCompletionCommand(CommandLine& cli);
/// Adds them all.
void addCommands(CommandLine& cli);

}  // namespace wristlog
