#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "commands/commands.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "replay/replayed_world.h"
#include "replay/session_record.h"
#include "session/process.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace fs = std::filesystem;
namespace platform = hy_wristlog::platform;

namespace {

using Arguments = std::vector<std::string>;

[[noreturn]] void refuseReplay(std::int32_t number, const std::string& words) {
  throw hw::Failure(number, "wristlog", words);
}

SessionRecord readRecord(const std::string& file) {
  constexpr std::size_t LongestRecord = std::size_t{256} << 20;
  try {
    return recordOf(platform::current().files().readUpTo(LongestRecord, file));
  } catch (const platform::SystemError& error) {
    refuseReplay(hw::FailureNumber::PathFileAccess,
                 file + ": " + platform::current().environment().errorText(error.Number));
  } catch (const hw::Failure& failure) {
    refuseReplay(failure.Number, file + " cannot be replayed: " + failure.Description);
  }
}

bool has(const Arguments& arguments, std::string_view word) {
  return std::find(arguments.begin(), arguments.end(), word) != arguments.end();
}

/// What the console watched goes without its screen.
Arguments workflowOfConsole(const SessionRecord& record) {
  const std::string workflow = valueOf(record.Arguments, "--workflow");
  Arguments arguments{workflow.empty() ? "status" : workflow};
  if (!record.Model.empty()) arguments.insert(arguments.end(), {"--model", record.Model});
  if (workflow == "retrieve") {
    const std::string folder = valueOf(record.Arguments, "--out");
    arguments.insert(arguments.end(), {"--out", folder.empty() ? "recording" : folder});
  }
  if (has(record.Arguments, "--ignore-warnings")) arguments.emplace_back("--ignore-warnings");
  return arguments;
}

/// A Pendreader's port that was remembered, or simulated, is the first that was opened.
void addPort(const SessionRecord& record, Arguments& arguments) {
  const auto opened =
      std::find_if(record.Events.begin(), record.Events.end(),
                   [](const platform::WireEvent& event) { return event.Kind == platform::WireKind::Open; });
  if (arguments.size() < 2 || arguments[1] == "find-port" || has(arguments, "--search") ||
      !valueOf(arguments, "--port").empty() || opened == record.Events.end())
    return;
  addOption(arguments, {"--port", std::to_string(opened->Number)});
}

/// Whether it is a `configure` that was not refused. What this user had retrieved by then is not in the
/// record.
bool wasAllowed(const SessionRecord& record, const Arguments& arguments) {
  const bool configures = arguments[arguments[0] == "legacy" && arguments.size() > 1 ? 1 : 0] == "configure";
  const bool refused = record.Failed && record.Failed->Number == hw::FailureNumber::FileExists;
  return configures && !refused && !has(arguments, "--erase");
}

Arguments commandOf(const SessionRecord& record) {
  constexpr std::array Known{"docks", "status", "configure", "retrieve", "config", "console", "legacy"};
  const std::string name = record.Arguments.empty() ? "" : record.Arguments.front();
  if (std::find(Known.begin(), Known.end(), name) == Known.end())
    refuseReplay(hw::FailureNumber::InvalidCall,
                 "The record is that of a command that uses no link: " + name);
  if (name == "console") return workflowOfConsole(record);
  Arguments arguments = withoutOwnWorld(record.Arguments);
  if (record.Redacted) addOption(arguments, {"--redact"});
  if (name == "legacy") addPort(record, arguments);
  if (wasAllowed(record, arguments)) addOption(arguments, {"--erase"});
  return arguments;
}

void prepareFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  const bool isEmpty = !error && fs::is_empty(folder, error);
  if (error) refuseReplay(hw::FailureNumber::PathFileAccess, folder + ": " + error.message());
  if (!isEmpty) refuseReplay(hw::FailureNumber::FileExists, folder + " is not empty");
}

/// The world of the record is the thread's, and its Ctrl-C the program's, as long as this lives.
class Replaying {
 public:
  explicit Replaying(const ReplayedWorld& world)
      : scope_(world.platform()), wasInterrupted_(interruptRequested()) {}
  ~Replaying() { setInterruptRequested(wasInterrupted_); }
  Replaying(const Replaying&) = delete;
  Replaying& operator=(const Replaying&) = delete;

 private:
  platform::WorldScope scope_;
  bool wasInterrupted_;
};

std::string secondsText(double seconds) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.3f", seconds);
  return text.data();
}

}  // namespace

int runReplay(const CommonOptions& common, const ReplayOptions& options, const CommandRunner& run) {
  const SessionRecord record = readRecord(options.File);
  Arguments arguments = commandOf(record);
  for (const auto& [wanted, name] : {std::pair{common.AsJson, "--json"}, {common.Console, "--console"}})
    if (wanted && !has(arguments, name)) addOption(arguments, {name});
  // What failed before the link was used was the machine it ran on, which the record does not hold.
  if (record.Failed && !usesPort(record)) throw hw::Failure(*record.Failed);
  if (!options.Folder.empty()) prepareFolder(options.Folder);
  int status = Unsuccessful;
  std::optional<Difference> difference;
  {
    const ReplayedWorld world(record, options.Folder, [] {
      setInterruptRequested(true);
      // In the session, too, the host had passed it on at this moment.
      platform::current().host().serveEvents();
    });
    const Replaying here(world);
    status = run(arguments);
    difference = world.difference();
  }
  std::error_code missing;
  if (!options.Folder.empty() && fs::exists(options.Folder, missing))
    complain() << "This was replayed: what the command wrote is in " << options.Folder << ".\n";
  if (!record.ExitStatus) {
    complain() << "The record is cut: it ends before its session did.\n";
    return std::max<int>(status, Unsuccessful);
  }
  if (difference) {
    complain() << "The program now says something else than in the record, at byte " << difference->Byte
               << " of what it sends, " << secondsText(difference->Time)
               << " s after the start.\n  Recorded: " << difference->Recorded
               << "\n  Now: " << difference->Now << '\n';
    return std::max<int>(status, Unsuccessful);
  }
  if (*record.ExitStatus != status) {
    complain() << "The command ended with exit status " << status << ", in the record with "
               << *record.ExitStatus << (record.Failed ? ": " + record.Failed->Description : "") << ".\n";
    return std::max<int>(status, Unsuccessful);
  }
  return status;
}

}  // namespace wristlog
