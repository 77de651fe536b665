#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <exception>
#include <functional>
#include <iostream>
#include <new>
#include <string_view>

#include "commands.h"
#include "hy_wristlog/failure.h"
#include "json_output.h"
#include "meanings.h"
#include "platform/platform.h"
#include "process.h"
#include "workflows/engineering.h"

namespace wristlog {
namespace {

constexpr const char* DemoFolder = "demo-recording";
constexpr std::int32_t InvalidCall = 5, OutOfMemory = 7, PathFileAccess = 75;

std::string validDate(const std::string& text) {
  try {
    hy_wristlog::engineering::dateFromText(text);
    return {};
  } catch (const hy_wristlog::Failure& failure) {
    return failure.Description;
  }
}

/// Loggers count seconds from 1970 in 32 bits; a moment outside would become "none" unnoticed.
std::string validLoggerTime(const std::string& text) {
  namespace engineering = hy_wristlog::engineering;
  std::string problem = validDate(text);
  if (!problem.empty()) return problem;
  const double date = engineering::dateFromText(text);
  if (date < engineering::dateFromText("1970-01-02") || date > engineering::dateFromText("2038-01-18"))
    return "\"" + text + "\" is outside the logger's calendar, 1970-01-02 to 2038-01-18";
  return {};
}

std::string validSize(const std::string& text) {
  double value = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  return error == std::errc{} && end == last && value >= 0 && value <= 9999.9
             ? std::string()
             : "\"" + text + "\" is no number from 0 to 9999.9";
}

std::string validFolder(const std::string& text) { return text.empty() ? "the folder has no name" : ""; }

/// For a text that a logger keeps in a field of `length` characters.
auto storableIn(std::size_t length) {
  return [length](const std::string& text) -> std::string {
    if (hy_wristlog::engineering::isStorable(text, length)) return {};
    return "\"" + text + "\" does not fit: at most " + std::to_string(length) +
           " characters of the Western European set";
  };
}

class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.set_version_flag(
        "--version", [] { return "wristlog " + hy_wristlog::Class_Main().Get_Version(); },
        "Show the version");
    app_.footer(
        "Try 'wristlog demo' first: it needs no hardware. 'wristlog COMMAND --help' explains a command.\n"
        "Exit status: 0 good; 1 the logger or the data gave trouble, as the message says; 2 wrong usage.");
    addDemo();
    addDocks();
    addStatus();
    addConfigure();
    addRetrieve();
    addDecode();
    addZones();
  }

  int run(int argc, char** argv) {
    const int status = parseAndRun(argc, argv);
    return standardOutputIsWhole() ? status : std::max<int>(status, Unsuccessful);
  }

 private:
  int parseAndRun(int argc, char** argv) {
    try {
      app_.parse(argc, argv);
    } catch (const CLI::Success& answer) {
      return app_.exit(answer, std::cout, std::cerr);
    } catch (const CLI::ParseError& error) {
      app_.exit(error, std::cerr, std::cerr);
      if (std::find(argv, argv + argc, std::string_view("--json")) != argv + argc)
        print(failureJson(hy_wristlog::Failure(InvalidCall, "wristlog", error.what())));
      return WrongUsage;
    }
    try {
      return command_();
    } catch (const hy_wristlog::Failure& failure) {
      return fail(failure);
    } catch (const hy_wristlog::platform::SystemError& error) {
      return fail({PathFileAccess, "wristlog",
                   hy_wristlog::platform::current().environment().errorText(error.Number)});
    } catch (const std::bad_alloc&) {
      return fail({OutOfMemory, "wristlog", "There is not enough memory"});
    } catch (const std::exception& problem) {
      return fail({InvalidCall, "wristlog", problem.what()});
    }
  }

  int fail(const hy_wristlog::Failure& failure) const {
    if (common_.AsJson)
      print(failureJson(failure));
    else
      std::cerr << wordsFor(failure) << '\n';
    return Unsuccessful;
  }

  CLI::App* add(const char* name, const char* description, std::function<int()> command) {
    CLI::App* sub = app_.add_subcommand(name, description);
    sub->callback([this, command = std::move(command)] { command_ = command; });
    sub->footer("");
    sub->add_flag("--json", common_.AsJson, "One JSON document on standard output, nothing else");
    return sub;
  }

  void addLink(CLI::App* sub) {
    sub->add_option("--simulate", common_.Simulate, "A simulated dock with a worn logger, in simulated time")
        ->check(CLI::IsMember({"vivid", "kestrin2"}));
    sub->add_flag("--console", common_.Console, "Show what passes on the link on standard error");
  }

  static void addModel(CLI::App* sub, std::string& model) {
    sub->add_option("--model", model, "The logger's model: vivid (Kestrin Vivid) or kestrin2 (Kestrin 2)")
        ->required()
        ->check(CLI::IsMember({"vivid", "kestrin2"}));
  }

  static void addAttempts(CLI::App* sub, std::int16_t& attempts) {
    sub->add_option("--retries", attempts, "How often to try in all when the link fails (else once)")
        ->check(CLI::Range(1, 100));
  }

  void addDemo() {
    CLI::App* sub =
        add("demo", "A simulated logger: configure it, wear it for a week, retrieve; takes seconds", [this] {
          demo_.OwnFolder = demo_.Folder.empty();
          if (demo_.OwnFolder) demo_.Folder = DemoFolder;
          return runDemo(common_, demo_);
        });
    sub->add_option("--out", demo_.Folder,
                    "Folder for the recording's files; else demo-recording, replaced by each demo")
        ->check(validFolder);
    sub->add_flag("--force", demo_.Force, "Overwrite files in the folder");
    sub->add_flag("--console", common_.Console, "Show what passes on the link on standard error");
  }

  void addDocks() {
    addLink(add("docks", "The docks that are connected, and what is in them",
                [this] { return runDocks(common_); }));
  }

  void addStatus() {
    CLI::App* sub =
        add("status", "What state the docked logger is in", [this] { return runStatus(common_, model_); });
    addModel(sub, model_);
    addLink(sub);
  }

  void addConfigure() {
    CLI::App* sub = add("configure", "Prepare the docked logger for a recording",
                        [this] { return runConfigure(common_, configure_); });
    addModel(sub, configure_.Model);
    sub->add_option("--mode", configure_.Mode,
                    "1 activity, 2 light (Vivid: colours), 3 both; Vivid also 4 lux, 5 activity and lux")
        ->required()
        ->check(CLI::Range(1, 5));
    sub->add_option("--epoch", configure_.EpochLength, "Seconds a value: 15, 30, 60, 120 or 300")
        ->required()
        ->check(CLI::IsMember({15, 30, 60, 120, 300}));
    sub->add_option("--identity", configure_.Subject.Identity,
                    "Who wears it, 64 characters; else the serial number")
        ->check(storableIn(64));
    sub->add_option("--initials", configure_.Subject.Initials, "Three letters")->check(storableIn(3));
    sub->add_option("--gender", configure_.Subject.Gender, "One letter; without one, retrieve warns")
        ->check(storableIn(1));
    sub->add_option("--dob", configure_.Subject.BirthDate, "Date of birth, yyyy-mm-dd")->check(validDate);
    sub->add_option("--height", configure_.Subject.Height, "To one decimal, in a unit of your choice")
        ->check(validSize);
    sub->add_option("--weight", configure_.Subject.Weight, "To one decimal, in a unit of your choice")
        ->check(validSize);
    sub->add_option("--guid", configure_.Subject.Guid,
                    "Identifier of the subject, 32 characters; else a new one")
        ->check(storableIn(32));
    sub->add_option("--zone", configure_.Zone,
                    "Three letters, see 'wristlog zones'; else the machine's zone");
    sub->add_flag("--no-daylight", configure_.NoDaylight, "Do not adjust for daylight time");
    sub->add_option("--set-time", configure_.SetTime, "Local time for the logger's clock; else now")
        ->check(validLoggerTime);
    sub->add_option("--start", configure_.Start, "Local start, yyyy-mm-ddThh:mm; else as soon as possible")
        ->check(validLoggerTime);
    sub->add_option("--end", configure_.End, "Local end; else never (2038 when there is a start)")
        ->check(validLoggerTime);
    sub->add_option("--date-format", configure_.DateFormat, "Of the logger's display, if it has one")
        ->check(CLI::IsMember({"mmdd", "ddmm"}));
    sub->add_option("--time-format", configure_.TimeFormat, "Of the logger's display, if it has one")
        ->check(CLI::IsMember({"off", "12", "24"}));
    addAttempts(sub, configure_.Attempts);
    addLink(sub);
    sub->footer(
        "Example: wristlog configure --model vivid --mode 5 --epoch 60 --identity \"Subject 17\" --gender F");
  }

  void addRetrieve() {
    CLI::App* sub = add("retrieve", "Read and decode the docked logger's recording",
                        [this] { return runRetrieve(common_, retrieve_); });
    addModel(sub, retrieve_.Model);
    sub->add_option("--out", retrieve_.Folder, "Folder for the recording's files")
        ->required()
        ->check(validFolder);
    sub->add_flag("--force", retrieve_.Force, "Overwrite files in the folder");
    sub->add_flag("--ignore-warnings", retrieve_.IgnoreWarnings, "Go on where a warning would end it");
    addAttempts(sub, retrieve_.Attempts);
    addLink(sub);
    sub->footer(
        "Example: wristlog retrieve --model vivid --out subject-17\n"
        "The recording stays in the logger until it is configured again.");
  }

  void addDecode() {
    CLI::App* sub =
        add("decode", "Decode a saved recording again", [this] { return runDecode(common_, decode_); });
    sub->add_option("--config", decode_.ConfigFile, "config.ini of the recording")->required();
    sub->add_option("--raw", decode_.RawFile, "raw.bin, or a raw data CSV")->required();
    sub->add_option("--out", decode_.Folder, "Folder for the recording's files; else none are written")
        ->check(validFolder);
    sub->add_flag("--force", decode_.Force, "Overwrite files in the folder");
    sub->add_flag("--diagnostic", decode_.Diagnostic, "Go on where the data are questionable");
    sub->footer("Example: wristlog decode --config subject-17/config.ini --raw subject-17/raw.bin");
    sub->add_option("--now", decode_.Now, "Decode as if it were this time (UTC, yyyy-mm-ddThh:mm:ss)")
        ->check(validDate);
  }

  void addZones() {
    add("zones", "The time zones and their abbreviations; * is the machine's",
        [this] { return runZones(common_); });
  }

  CLI::App app_{"Talks to wrist-worn activity loggers in their docks", "wristlog"};
  CommonOptions common_;
  std::function<int()> command_;
  std::string model_;
  DemoOptions demo_;
  ConfigureOptions configure_;
  RetrieveOptions retrieve_;
  DecodeOptions decode_;
};

}  // namespace
}  // namespace wristlog

int main(int argc, char** argv) {
  wristlog::prepareStandardStreams();
  return wristlog::CommandLine().run(argc, argv);
}
