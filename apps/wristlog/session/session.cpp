#include "session/session.h"

#include <chrono>
#include <vector>

#include "engineering/docks.h"
#include "hy_wristlog/docks.h"
#include "hy_wristlog/failure.h"
#include "platform/remote_address.h"
#include "replay/session_record.h"
#include "replay/session_recorder.h"
#include "session/process.h"
#include "session/terminal_host.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

namespace {

constexpr std::chrono::hours WornBefore{72};
constexpr std::int32_t SimulatedEpoch = 60;

hy_wristlog::enmLoggerPointer onlyDockedModel() {
  std::vector<hy_wristlog::enmLoggerPointer> models;
  for (const auto& dock : hy_wristlog::engineering::docks())
    if (dock.Connected > 0) models.push_back(dock.Model);
  if (models.size() > 1)
    throw hy_wristlog::Failure(hy_wristlog::ReturnCode::TooManyDocks, "wristlog",
                               "Docks of both models are connected. Name one with --dock or --model.");
  if (models.empty())
    throw hy_wristlog::Failure(hy_wristlog::ReturnCode::NotFound, "wristlog", wordsForNoDock());
  return models.front();
}

void warnOfReadable(const std::string& dock, const std::string& device) {
  const auto address = platform::parseRemoteAddress(device);
  if (address && !address->warning().empty()) complain() << dock << ' ' << address->warning() << '\n';
}

/// Tells of docks whose logger's data travel readable: the chosen one, else those of that model or of any.
void warnOfReadableDocks(hy_wristlog::enmLoggerPointer model) try {
  const std::string chosen = hy_wristlog::dockInUse();
  warnOfReadable(chosen, chosen);
  for (const hy_wristlog::Dock& dock : hy_wristlog::docks())
    if (chosen.empty() ? model == hy_wristlog::LggrPntr_None || model == dock.Model : dock.Name == chosen)
      for (const std::string& name : dock.OtherNames) warnOfReadable(dock.Name, name);
} catch (const hy_wristlog::Failure&) {
  // The workflow that searches next says what is wrong.
}

}  // namespace

sim::DockBench makeWornBench(const std::string& model) {
  sim::ModelBench bench = sim::makeBench(sim::modelOptions(model), {});
  sim::setUpForWearing(bench, SimulatedEpoch);
  bench.wear(WornBefore);
  return bench;
}

Session::Session(const CommonOptions& options, bool keepRecord) : options_(options) {
  if (!options.Simulate.empty()) bench_ = makeWornBench(options.Simulate);
  start(keepRecord);
}

Session::Session(const CommonOptions& options, const sim::DockBench& bench)
    : options_(options), bench_(bench) {
  start(false);
}

void Session::start(bool keepRecord) {
  if (bench_) scope_.emplace(bench_->World);
  chosen_.emplace(worldFor(options_, platform::shareCurrent()));
  if (!hy_wristlog::dockInUse().empty()) chosenReaderPort_ = hy_wristlog::engineering::readerPort();
  const auto onStop = [this] {
    if (recorder_) recorder_->stop();
  };
  host_ = std::make_shared<TerminalHost>(options_.Console, onStop, options_.Progress);
  recorder_ = options_.Recorder;
  if (!recorder_ && keepRecord) recorder_ = std::make_shared<SessionRecorder>(options_.Redact);
  if (recorder_) {
    if (keepRecord) recorder_->keep();
    recorded_.emplace(recorder_->begin(platform::shareCurrent(), options_.Arguments, options_.Simulate));
  }
  hy_wristlog::setHost(host_);
  main_ = std::make_unique<hy_wristlog::Class_Main>();
  main_->Let_WakeOnInput(true);
  host_->attach(main_.get());
}

Session::~Session() {
  host_->attach(nullptr);
  main_.reset();
  hy_wristlog::setHost(nullptr);
}

void Session::writeRecord(const RecordingFiles& files, std::int32_t code, const std::string& meaning) {
  try {
    const std::string text = recorder_->text(Unsuccessful, "Code " + std::to_string(code) + ": " + meaning);
    if (!usesPort(recordOf(text))) return;
    complain() << "What passed on the link is in " << files.writeSessionLog(text)
               << "; send it along when you ask for help.\n";
    if (!options_.Redact) complain() << "It tells who wears the logger; --redact leaves that out.\n";
  } catch (const hy_wristlog::Failure& failure) {
    if (!options_.Redact) throw;
    complain() << "No session.log was kept: " << failure.Description << ".\n";
  }
}

std::shared_ptr<hy_wristlog::Class_VardenLogger> Session::logger() const { return host_->logger(); }

std::optional<std::int16_t> Session::simulatedPort() const {
  if (!bench_) return std::nullopt;
  return static_cast<std::int16_t>(bench_->Dock->comPort());
}

double Session::networkDelay() const {
  return recorder_ ? std::chrono::duration<double>(recorder_->delay()).count() : 0;
}

void Session::showProgress(const std::string& text) { host_->showProgress(text); }

void Session::endProgress() { host_->endProgress(); }

void requireNotStopped() {
  if (interruptRequested())
    throw hy_wristlog::Failure(hy_wristlog::ReturnCode::Aborted, "wristlog", "Stopped. Nothing was changed");
}

std::shared_ptr<platform::Platform> worldFor(const CommonOptions& options,
                                             const std::shared_ptr<platform::Platform>& world) {
  if (!options.UsesLink) return world;
  const platform::WorldScope scope(world);
  const bool isNamed = !options.Dock.empty();
  const std::string name =
      isNamed ? options.Dock : world->environment().variable("HY_WRISTLOG_DOCK").value_or("");
  try {
    if (!name.empty()) hy_wristlog::useDock(name, options.Model);
  } catch (hy_wristlog::Failure& failure) {
    if (!isNamed) failure.Description += ". HY_WRISTLOG_DOCK names it";
    throw;
  }
  // Work with many docks at once tells of them when it ends.
  if (!options.Progress) warnOfReadableDocks(options.Model);
  if (name.empty()) return world;
  const bool isVarden = options.Model != hy_wristlog::LggrPntr_Pendreader;
  if (isVarden && hy_wristlog::engineering::readerPort() > 0)
    throw hy_wristlog::Failure(
        hy_wristlog::ReturnCode::WrongLogger, "wristlog",
        "The dock " + hy_wristlog::dockInUse() +
            " is a Pendreader: the commands for its loggers are those of 'wristlog legacy'");
  return platform::shareCurrent();
}

hy_wristlog::enmLoggerPointer modelFromName(const std::string& name) {
  if (name.empty()) return onlyDockedModel();
  return name == "vivid" ? hy_wristlog::LggrPntr_KRVivid : hy_wristlog::LggrPntr_KRII;
}

}  // namespace wristlog
