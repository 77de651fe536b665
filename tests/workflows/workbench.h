#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/dates.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/host.h"
#include "simulator/bench.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog::workbench {

using namespace std::chrono_literals;
using simulator::always;
using simulator::BenchOptions;
using simulator::Fault;
using simulator::LoggerFaults;
using simulator::once;
namespace block = simulator::block;

inline constexpr enmLoggerPointer Models[] = {LggrPntr_KRVivid, LggrPntr_KRII};

inline BenchOptions optionsOf(enmLoggerPointer model, const char* firmware = nullptr) {
  const bool vivid = model == LggrPntr_KRVivid;
  auto options = vivid ? simulator::vividBenchOptions() : simulator::kestrin2BenchOptions();
  if (firmware != nullptr) options.Logger.Firmware = firmware;
  return options;
}

/// Counts the rounds of its events, asks for an abort in one of them, and sees what is downloaded.
struct WatchingHost : Host {
  Class_Main* Main = nullptr;
  std::int32_t Rounds = 0, AbortIn = -1, Downloaded = 0;
  std::function<void()> EachRound;
  void downloadProgress(std::int32_t bytesSoFar, std::int32_t) override { Downloaded = bytesSoFar; }
  void serveEvents() override {
    if (++Rounds == AbortIn) Main->AbortComms();
    if (EachRound) EachRound();
  }
};

struct ConfigureArguments {
  std::int32_t Mode = VardenMode_ActivityOnly, Epoch = 30;
  std::string Zone = "EST";
  bool Daylight = true;
  std::int32_t SetTime = 0, Start = 0, End = 0;
  std::int32_t DateFormat = DateFormat_MMDD, TimeFormat = TimeFormat_12hourAMPM;
};

inline Class_Subject jane() {
  Class_Subject subject;
  subject.Let_Identity("Jane");
  subject.Let_Initials("JD");
  subject.Let_GUID("0123456789ABCDEF0123456789ABCDEF");
  subject.Let_Gender("F");
  subject.Let_DOB(dateSerial(1984, 5, 6));
  subject.Let_Weight(70.1F);
  subject.Let_Height(168.5F);
  return subject;
}

/// A host's application: one logger of a model in its dock, the public object, and what it handed out.
class Workbench {
 public:
  explicit Workbench(enmLoggerPointer model) : Workbench(model, optionsOf(model)) {}
  Workbench(enmLoggerPointer model, const BenchOptions& options)
      : Model(model),
        bench(simulator::makeBench(options)),
        scope_(bench.World),
        main(std::make_unique<Class_Main>()) {
    host->Main = main.get();
    setHost(host);
  }

  std::int32_t configure(const ConfigureArguments& with = {}) {
    return main->Configure(Model, static_cast<enmVardenLoggingMode>(with.Mode), with.Epoch, *subject,
                           with.Zone, with.Daylight, with.SetTime, with.Start, with.End,
                           static_cast<enmDateFormat>(with.DateFormat),
                           static_cast<enmTimeFormat>(with.TimeFormat), &battery, &serialNumber);
  }
  std::int32_t status() { return main->GetStatus(Model, simple, text, data, statusSubject, &battery); }
  std::int32_t retrieve(bool ignoreWarnings = false) {
    return main->Retrieve(Model, data, subject, result, &lowBattery, nullptr, ignoreWarnings);
  }

  simulator::SimulatedLogger& logger() const { return *bench.Logger; }
  simulator::ConfigBlock& stored() const { return bench.Logger->block(); }
  bool portClosed() const { return !bench.Dock->isOpen(); }
  void wait(simulator::nanoseconds time) const { bench.World->advance(time); }
  std::size_t heard(std::string_view command) const {
    const auto& lines = logger().commands();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), command));
  }

  enmLoggerPointer Model;
  simulator::Bench bench;

 private:
  platform::WorldScope scope_;

 public:
  std::unique_ptr<Class_Main> main;
  std::shared_ptr<WatchingHost> host = std::make_shared<WatchingHost>();
  std::shared_ptr<Class_Subject> subject = std::make_shared<Class_Subject>(jane()), statusSubject;
  std::shared_ptr<Class_VardenLogger> data;
  enmDecodeResult result = Decode_OK;
  bool lowBattery = false;
  float battery = -7;
  std::string simple, text, serialNumber;
};

/// Something that is done to a workbench before a workflow runs.
using Arrange = std::function<void(Workbench&)>;

// clang-format off
inline Arrange set(simulator::BlockField field, std::int64_t value) {
  return [=](Workbench& desk) { desk.stored().set(field, value); };
}
inline Arrange all(const std::vector<Arrange>& steps) {
  return [=](Workbench& desk) { for (const Arrange& step : steps) step(desk); };
}
inline Arrange fails(Fault LoggerFaults::*fault, Fault when = always()) {
  return [=](Workbench& desk) { desk.logger().Faults.*fault = when; };
}
inline Arrange badConfig(Fault when = always()) { return fails(&LoggerFaults::BadConfigChecksum, when); }
inline Arrange badLines(Fault when = always()) { return fails(&LoggerFaults::BadLineChecksum, when); }
inline Arrange openFails(std::int32_t number, Fault when = always()) {
  return [=](Workbench& desk) { desk.bench.Dock->Faults.Open = {number, when}; };
}
inline const Arrange
    OtherModel = [](auto& desk) { desk.stored().set(block::Model, desk.Model == LggrPntr_KRVivid ? 1 : 2); },
    SecondDock = [](auto& desk) { desk.bench.World->addDock({desk.bench.Dock->kind(), 41, {}}); },
    NoDock = [](auto& desk) { desk.bench.Dock->unplug(); },
    NoLogger = [](auto& desk) { desk.bench.Dock->pullOut(); },
    Silent = [](auto& desk) { desk.logger().Faults.Silent = true; },
    Held = [](auto& desk) { desk.bench.Dock->Faults.Held = true; },
    LockedUp = [](auto& desk) { desk.bench.Dock->Faults.LockedUp = true; };
// clang-format on

/// A workbench whose logger has recorded for a while and sits in its dock again.
inline std::unique_ptr<Workbench> recorded(enmLoggerPointer model, simulator::nanoseconds worn = 20min,
                                           const simulator::WearOptions& wear = {}) {
  auto made = std::make_unique<Workbench>(model);
  made->logger().setUp(ordinarySetup(*made->bench.World, simulator::Mode::Activity, 30));
  made->logger().wear(worn, wear);
  return made;
}

/// A workbench whose logger has recorded for a while and has ended, so that its bytes do not change any more.
inline std::unique_ptr<Workbench> ended(enmLoggerPointer model, std::chrono::minutes worn = 5min) {
  auto made = recorded(model, worn);
  made->stored().set(block::StopTime, made->bench.World->now());
  made->wait(31s);
  made->bench.line().resetTraffic();
  return made;
}

}  // namespace hy_wristlog::workbench
