#include "cli/cli.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <new>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/cli_checks.h"
#include "cli/cli_names.h"
#include "errors/Procedure.h"
#include "hy_wristlog/Class_Main.h"
#include "platform/platform.h"
#include "recording/json_output.h"
#include "replay/session_recorder.h"
#include "session/process.h"
#include "words/meanings.h"
#include "words/safe_text.h"
#include "words/say.h"

namespace wristlog {

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>("Talks to wrist-worn activity loggers in their docks", "wristlog")) {
  app_->require_subcommand(1);
  app_->set_version_flag(
      "--version", [] { return "wristlog " + hy_wristlog::Class_Main().Get_Version(); }, "Show the version");
  app_->failure_message([](const CLI::App* app, const CLI::Error& error) {
    const std::string words = error.what();
    return safeLine(words) + CLI::FailureMessage::simple(app, error).substr(words.size());
  });
  app_->footer(
      "Try 'wristlog demo' first: it needs no hardware. 'wristlog COMMAND --help' explains a command.\n"
      "Exit status: 0 good; 1 the logger or the data gave trouble, as the message says; 2 wrong usage.");
}

CommandLine::~CommandLine() = default;

int CommandLine::run(int argc, char** argv) {
  const int status = parseAndRun(argc, argv);
  return standardOutputIsWhole() ? status : std::max<int>(status, Unsuccessful);
}

int CommandLine::parseAndRun(int argc, char** argv) {
  if (argc > 0) Common.Arguments.assign(argv + 1, argv + argc);
  try {
    app_->parse(argc, argv);
  } catch (const CLI::Success& answer) {
    return show(answer);
  } catch (const CLI::RequiredError& error) {
    // An unknown word is the better explanation of a missing required one.
    return app_->remaining(true).empty() ? refuse(error, argc, argv) : refuse(unknownWords(), argc, argv);
  } catch (const CLI::ExtrasError&) {
    return refuse(unknownWords(), argc, argv);
  } catch (const CLI::ParseError& error) {
    return refuse(error, argc, argv);
  }
  try {
    const hy_wristlog::CommandUnderWay underWay;
    return runCommand();
  } catch (const CLI::ParseError& error) {
    return refuse(error, argc, argv);
  } catch (const hy_wristlog::Failure& failure) {
    return tellFailure(failure);
  } catch (const hy_wristlog::platform::SystemError& error) {
    return tellFailure({hy_wristlog::FailureNumber::PathFileAccess, "wristlog",
                        hy_wristlog::platform::current().environment().errorText(error.Number)});
  } catch (const std::bad_alloc&) {
    return tellFailure({hy_wristlog::FailureNumber::OutOfMemory, "wristlog", "There is not enough memory"});
  } catch (const std::exception& problem) {
    return tellFailure({hy_wristlog::FailureNumber::InvalidCall, "wristlog", problem.what()});
  }
}

int CommandLine::runCommand() {
  if (!Common.UsesLink) return command_();
  Common.Recorder = recorderFor(Common.Record, Common.Redact);
  if (!Common.Recorder) return command_();
  int status = Unsuccessful;
  try {
    status = command_();
  } catch (const hy_wristlog::Failure& failure) {
    Common.Recorder->finish(status, failure);
    throw;
  } catch (const std::exception&) {
    Common.Recorder->finish(status);
    throw;
  } catch (const hy_wristlog::platform::SystemError&) {
    Common.Recorder->finish(status);
    throw;
  }
  return Common.Recorder->finish(status) ? status : std::max<int>(status, Unsuccessful);
}

int CommandLine::show(const CLI::Error& answer) const {
  std::ostringstream good, bad;
  const int status = app_->exit(answer, good, bad);
  if (!good.str().empty()) say().lines(good.str(), "");
  if (!bad.str().empty()) complain().lines(bad.str(), "");
  return status;
}

int CommandLine::refuse(const CLI::ParseError& error, int argc, char** argv) const {
  show(error);
  if (std::find(argv, argv + argc, std::string_view("--json")) != argv + argc)
    print(
        failureJson(hy_wristlog::Failure(hy_wristlog::FailureNumber::InvalidCall, "wristlog", error.what())));
  return WrongUsage;
}

const CLI::App& CommandLine::reached() const {
  const CLI::App* app = app_.get();
  while (!app->get_subcommands().empty()) app = app->get_subcommands().back();
  return *app;
}

CLI::ExtrasError CommandLine::unknownWords() const {
  const std::vector<std::string> words = app_->remaining(true);
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : " ") + word;
  const std::string suggestion = words.empty() ? "" : suggestionFor(words.front(), reached());
  return CLI::ExtrasError("Unknown: " + list + "." + suggestion, CLI::ExitCodes::ExtrasError);
}

const CLI::App& CommandLine::named(const std::vector<std::string>& names) const {
  const CLI::App* app = app_.get();
  for (const std::string& name : names) {
    const auto found =
        app->get_subcommands([&name](const CLI::App* command) { return command->get_name() == name; });
    if (found.empty())
      throw CLI::ValidationError("There is no command \"" + name + "\"." + suggestionFor(name, *app));
    app = found.front();
  }
  return *app;
}

int CommandLine::tellFailure(const hy_wristlog::Failure& failure) const {
  if (Common.AsJson)
    print(failureJson(failure));
  else
    complain() << wordsFor(failure) << '\n';
  return Unsuccessful;
}

CLI::App* CommandLine::add(const char* name, const char* description, std::function<int()> command,
                           CLI::App* parent) {
  CLI::App* sub = (parent != nullptr ? parent : app_.get())->add_subcommand(name, description);
  sub->callback([this, command = std::move(command)] { command_ = command; });
  sub->footer("");
  sub->add_flag("--json", Common.AsJson, "One JSON document on standard output, nothing else");
  return sub;
}

CLI::App* CommandLine::addGroup(const char* name, const char* description) {
  CLI::App* group = app_->add_subcommand(name, description);
  group->require_subcommand(1);
  group->footer("");
  return group;
}

void CommandLine::addRecord(CLI::App* sub, CLI::Option* when) {
  CLI::Option* record =
      sub->add_option("--record", Common.Record,
                      "Record the session in this new file, for 'wristlog replay'; also HY_WRISTLOG_RECORD")
          ->check(validFile);
  CLI::Option* redact =
      sub->add_flag("--redact", Common.Redact, "Leave who wears the logger out of the record");
  if (when == nullptr) {
    sub->preparse_callback([this](std::size_t) { Common.UsesLink = true; });
    return;
  }
  when->each([this](const std::string&) { Common.UsesLink = true; });
  record->needs(when);
  redact->needs(when);
}

void CommandLine::addLink(CLI::App* sub, const std::vector<std::string>& simulated, CLI::Option* when) {
  addRecord(sub, when);
  sub->add_option("--simulate", Common.Simulate,
                  "A simulated dock with a worn logger, in simulated time; the next command has another one")
      ->check(CLI::IsMember(simulated));
  addDock(sub);
  sub->add_flag("--console", Common.Console, "Show what passes on the link on standard error");
}

CLI::Option* CommandLine::addDock(CLI::App* sub) {
  return sub
      ->add_option("--dock", Common.Dock,
                   "The dock by a name of it, see 'wristlog docks'; also HY_WRISTLOG_DOCK")
      ->check(validName);
}

void CommandLine::addModel(CLI::App* sub, std::string& model) {
  sub->add_option(
         "--model", model,
         "The logger's model: vivid (Kestrin Vivid) or kestrin2 (Kestrin 2); else the one that is docked")
      ->check(CLI::IsMember(VardenModels))
      ->each([this](const std::string& name) {
        Common.Model = name == "vivid" ? hy_wristlog::LggrPntr_KRVivid : hy_wristlog::LggrPntr_KRII;
      });
}

void CommandLine::addAttempts(CLI::App* sub, std::int16_t& attempts) {
  sub->add_option("--retries", attempts, "How often to try in all when the link fails (else once)")
      ->check(CLI::Range(1, 100));
}

void CommandLine::addSubject(CLI::App* sub, SubjectOptions& subject, const SubjectLimits& limits) {
  sub->add_option(
         "--identity", subject.Identity,
         "Who wears it, " + std::to_string(limits.IdentityLength) + " characters; else the serial number")
      ->check(storableIn(limits.IdentityLength));
  sub->add_option("--initials", subject.Initials, "Three letters")->check(storableIn(3));
  sub->add_option("--gender", subject.Gender, "One letter from A to Z; else X, not told")->check(validGender);
  sub->add_option("--dob", subject.BirthDate, "Date of birth, yyyy-mm-dd")->check(limits.BirthDate);
  sub->add_option("--height", subject.Height, "To one decimal, in a unit of your choice")->check(limits.Size);
  sub->add_option("--weight", subject.Weight, "To one decimal, in a unit of your choice")->check(limits.Size);
  sub->add_option("--guid", subject.Guid, "Identifier of the subject, 32 hexadecimal digits; else a new one")
      ->check(validGuid);
}

void CommandLine::addErase(CLI::App* sub, bool& erase) {
  sub->add_flag("--erase", erase, "Erase what the logger has recorded, also when you have not retrieved it");
}

CLI::Option* CommandLine::addFolder(CLI::App* sub, std::string& folder, bool& force, const char* description,
                                    const ArgumentCheck& check) {
  sub->add_flag("--force", force, "Overwrite files in the folder");
  return sub->add_option("--out", folder, description)->check(check);
}

void CommandLine::addUnchecked(CLI::App* sub, bool& unchecked) {
  sub->add_flag("--unchecked", unchecked,
                "Take the bytes as they are, though they are not those that the configuration tells of");
}

void addCommands(CommandLine& cli) {
  addWorkflowCommands(cli);
  addFileCommands(cli);
  addPlotCommand(cli);
  addStudyCommand(cli);
  addConsoleCommand(cli);
  addPendrelCommands(cli);
  addSimulateCommand(cli);
  addReplayCommand(cli);
  addHelpCommand(cli);
  addCompletionCommand(cli);
}

}  // namespace wristlog
