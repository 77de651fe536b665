#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <iostream>

#include "commands.h"
#include "hy_wristlog/failure.h"
#include "json_output.h"
#include "platform/platform.h"

namespace wristlog {
namespace {

constexpr const char* DemoFolder = "demo-recording";

class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.failure_message(CLI::FailureMessage::help);
    addDemo();
    addDocks();
    addStatus();
    addConfigure();
    addRetrieve();
    addDecode();
    addZones();
  }

  int run(int argc, char** argv) {
    try {
      app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      const bool asked = error.get_exit_code() == 0;
      app_.exit(error, std::cout, std::cerr);
      return asked ? Good : WrongUsage;
    }
    try {
      return command_();
    } catch (const hy_wristlog::Failure& failure) {
      if (common_.AsJson)
        print(failureJson(failure));
      else
        std::cerr << failure.Description << " (failure " << failure.Number << ", " << failure.Source << ")\n";
    } catch (const hy_wristlog::platform::SystemError& error) {
      std::cerr << hy_wristlog::platform::current().environment().errorText(error.Number) << '\n';
    } catch (const std::exception& problem) {
      std::cerr << problem.what() << '\n';
    }
    return Unsuccessful;
  }

 private:
  CLI::App* add(const char* name, const char* description, std::function<int()> command) {
    CLI::App* sub = app_.add_subcommand(name, description);
    sub->callback([this, command = std::move(command)] { command_ = command; });
    sub->add_flag("--json", common_.AsJson, "One JSON document on standard output, nothing else");
    return sub;
  }

  void addLink(CLI::App* sub) {
    sub->add_option("--simulate", common_.Simulate, "A simulated dock with a worn logger, in simulated time")
        ->check(CLI::IsMember({"vivid", "kestrin2"}));
    sub->add_flag("--console", common_.Console, "Show what passes on the link on standard error");
  }

  static void addModel(CLI::App* sub, std::string& model) {
    sub->add_option("--model", model, "The logger's model")
        ->required()
        ->check(CLI::IsMember({"vivid", "kestrin2"}));
  }

  static void addAttempts(CLI::App* sub, std::int16_t& attempts) {
    sub->add_option("--retries", attempts, "Attempts in all when the link fails")->check(CLI::Range(1, 100));
  }

  void addDemo() {
    CLI::App* sub = add("demo", "Configure, wear for a week, retrieve: all simulated, in seconds", [this] {
      if (demo_.Folder.empty()) {
        demo_.Folder = DemoFolder;
        demo_.Force = true;
      }
      return runDemo(common_, demo_);
    });
    sub->add_option("--out", demo_.Folder, "Where the recording goes (demo-recording, made anew each time)");
    sub->add_flag("--force", demo_.Force, "Overwrite files in the folder of --out");
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
        ->required();
    sub->add_option("--epoch", configure_.EpochLength, "Seconds a value: 15, 30, 60, 120 or 300")->required();
    sub->add_option("--identity", configure_.Subject.Identity, "Who wears it; else the serial number");
    sub->add_option("--initials", configure_.Subject.Initials, "Three letters");
    sub->add_option("--gender", configure_.Subject.Gender, "One letter");
    sub->add_option("--dob", configure_.Subject.BirthDate, "Date of birth, yyyy-mm-dd");
    sub->add_option("--height", configure_.Subject.Height, "In tenths")->check(CLI::Range(0.0, 9999.9));
    sub->add_option("--weight", configure_.Subject.Weight, "In tenths")->check(CLI::Range(0.0, 9999.9));
    sub->add_option("--guid", configure_.Subject.Guid, "32 hexadecimal digits; else a new one");
    sub->add_option("--zone", configure_.Zone,
                    "Three letters, see 'wristlog zones'; else the machine's zone");
    sub->add_flag("--no-daylight", configure_.NoDaylight, "Do not adjust for daylight time");
    sub->add_option("--set-time", configure_.SetTime, "Local time for the logger's clock; else now");
    sub->add_option("--start", configure_.Start, "Local start, yyyy-mm-ddThh:mm; else as soon as possible");
    sub->add_option("--end", configure_.End, "Local end; else never (2038 when there is a start)");
    sub->add_option("--date-format", configure_.DateFormat, "The logger's display")
        ->check(CLI::IsMember({"mmdd", "ddmm"}));
    sub->add_option("--time-format", configure_.TimeFormat, "The logger's display")
        ->check(CLI::IsMember({"off", "12", "24"}));
    addAttempts(sub, configure_.Attempts);
    addLink(sub);
  }

  void addRetrieve() {
    CLI::App* sub = add("retrieve", "Read and decode the docked logger's recording",
                        [this] { return runRetrieve(common_, retrieve_); });
    addModel(sub, retrieve_.Model);
    sub->add_option("--out", retrieve_.Folder, "Folder for the recording's files")->required();
    sub->add_flag("--force", retrieve_.Force, "Overwrite files in it");
    sub->add_flag("--ignore-warnings", retrieve_.IgnoreWarnings, "Go on where a warning would end it");
    addAttempts(sub, retrieve_.Attempts);
    addLink(sub);
  }

  void addDecode() {
    CLI::App* sub =
        add("decode", "Decode a saved recording again", [this] { return runDecode(common_, decode_); });
    sub->add_option("--config", decode_.ConfigFile, "config.ini of the recording")->required();
    sub->add_option("--raw", decode_.RawFile, "raw.bin, or a raw data CSV")->required();
    sub->add_option("--out", decode_.Folder, "Folder for the recording's files");
    sub->add_flag("--force", decode_.Force, "Overwrite files in it");
    sub->add_flag("--diagnostic", decode_.Diagnostic, "Go on where the data are questionable");
    sub->add_option("--now", decode_.Now, "Decode as if it were this time (UTC, yyyy-mm-ddThh:mm:ss)");
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

int main(int argc, char** argv) { return wristlog::CommandLine().run(argc, argv); }
