#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>

#include "commands/commands.h"
#include "commands/held_recording.h"
#include "commands/retrieval.h"
#include "debugger/debugger_host.h"
#include "debugger/watched_world.h"
#include "engineering/docks.h"
#include "hy_wristlog/Class_Main.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "recording/retrieved_recording.h"
#include "replay/session_recorder.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

struct Result {
  std::int32_t Code = 0;
  std::string Words;
};

/// Makes the traffic that the screen shows. Runs to its end, or to an abort.
using Workflow = std::function<Result(hw::Class_Main&, hw::enmLoggerPointer model, const ConsoleOptions&)>;

Result resultOf(std::int32_t code, hw::enmLoggerPointer model, const std::string& details) {
  return {code, "Code " + std::to_string(code) + ": " + explanationOf(code, model) + details};
}

Result askStatus(hw::Class_Main& main, hw::enmLoggerPointer model, const ConsoleOptions&) {
  std::string simple;
  std::string words;
  std::shared_ptr<hw::Class_VardenLogger> logger;
  std::shared_ptr<hw::Class_Subject> subject;
  const std::int32_t code = main.GetStatus(model, simple, words, logger, subject);
  if (code != 0) return resultOf(code, model, "");
  return resultOf(code, model, " " + simple + (words == simple ? "" : ". " + words));
}

Result retrieveRecording(hw::Class_Main& main, hw::enmLoggerPointer model, const ConsoleOptions& options) {
  Retrieval retrieval = retrieve(main, model, options.IgnoreWarnings);
  RetrievedRecording recording(*retrieval.Logger, retrieval.Verdict, retrieval.LowBattery);
  constexpr bool AskedToStop = false;
  const std::string words = judge(retrieval, recording, model, AskedToStop);
  Result result{retrieval.isGood() ? 0 : retrieval.Code,
                "Code " + std::to_string(retrieval.Code) + ": " + words};
  if (retrieval.Verdict) result.Words += " " + verdictWords(retrieval);
  if (recording.part())
    result.Words += " The beginning of the recording came: " + wordsFor(*recording.part()) + ".";
  if (RecordingFiles files(options.Folder, options.Force); !options.Folder.empty() && recording.isThere()) {
    files.replacePart();
    const auto place = recording.placeFor(files);
    const HeldRecording held = heldBy(*retrieval.Logger);
    if (place) recording.write(*place);
    if (recording.isSound()) noteRetrieval(held, place.value_or(files).folder(), WholeRaw);
    result.Words +=
        place ? " Written to " + place->folder() + "." : " " + options.Folder + " was left as it is.";
  }
  if (retrieval.isGood()) result.Words += " The logger has stopped recording.";
  return result;
}

const std::map<std::string, Workflow>& workflows() {
  static const std::map<std::string, Workflow> known{{"status", askStatus}, {"retrieve", retrieveRecording}};
  return known;
}

hw::enmLoggerPointer dockedModel(const std::string& name, const std::shared_ptr<platform::Platform>& world) {
  const platform::WorldScope scope(world);
  return modelFromName(name);
}

Result watch(const CommonOptions& common, const ConsoleOptions& options) {
  std::optional<hw::simulator::DockBench> bench;
  if (!common.Simulate.empty()) bench = makeWornBench(common.Simulate);
  const std::shared_ptr<platform::Platform> machine = platform::shareCurrent();
  std::shared_ptr<platform::Platform> world = worldFor(common, bench ? bench->World : machine);
  const hw::enmLoggerPointer model = dockedModel(options.Model, world);
  DebuggerScreen screen("Communications Debugger: " + options.Workflow + ", " +
                            engineering::modelWords(model) + (bench ? ", simulated" : ""),
                        machine->clock());
  const auto host = std::make_shared<DebuggerHost>(screen);
  if (common.Recorder) world = common.Recorder->begin(world, common.Arguments, common.Simulate);
  const platform::WorldScope here(
      makeWatchedWorld(world, machine->clock(), options.Speed, [&screen] { screen.attend(); }));
  hw::setHost(host);
  if (RecordingFiles files(options.Folder, options.Force); !options.Folder.empty()) {
    files.replacePart();
    files.prepare();
  }
  Result result;
  hw::Class_Main main;
  main.Let_WakeOnInput(true);
  bool stopping = false;
  host->Abort = [&] {
    if (common.Recorder && !std::exchange(stopping, true)) common.Recorder->stop();
    main.AbortComms();
  };
  try {
    result = workflows().at(options.Workflow)(main, model, options);
  } catch (const hw::Failure& failure) {
    result = {failure.Number, wordsFor(failure)};
  }
  host->Abort = nullptr;
  screen.finish(result.Words);
  screen.stayUntilLeft();
  return result;
}

int refuse(const CommonOptions& common, const std::string& words) {
  if (common.AsJson)
    print(failureJson(hw::Failure(hw::FailureNumber::InvalidCall, "wristlog", words)));
  else
    complain() << words << ".\n";
  return WrongUsage;
}

}  // namespace

int runConsole(const CommonOptions& common, const ConsoleOptions& options) {
  if (common.AsJson) return refuse(common, "The console is a screen; --json goes with the other commands");
  if (!options.Folder.empty() && options.Workflow != "retrieve")
    return refuse(common, "--out goes with --workflow retrieve");
  try {
    const Result result = watch(common, options);
    (result.Code == 0 ? say() : complain()) << result.Words << '\n';
    return result.Code == 0 ? Good : Unsuccessful;
  } catch (const NoTerminal& reason) {
    return refuse(common, reason.Words);
  }
}

}  // namespace wristlog
