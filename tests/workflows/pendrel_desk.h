#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "base/dates.h"
#include "base/formats.h"
#include "base/inside.h"
#include "pendrel/Pendrel.h"
#include "support/surroundings.h"
#include "workflows/pendrel/PendrelWorkflows.h"
#include "workflows/workbench.h"

namespace hy_wristlog::pendrel_desk {

using namespace std::chrono_literals;
using simulator::always;
using simulator::once;
using simulator::PendrelModel;

inline constexpr PendrelModel Models[] = {PendrelModel::Plain, PendrelModel::Checksums, PendrelModel::Steps};

inline simulator::PendrelBenchOptions optionsOf(PendrelModel model) {
  simulator::PendrelBenchOptions options;
  options.Logger.Model = model;
  return options;
}

/// A service desk with one Pendreader on COM1, which is remembered, and what the workflows handed out.
class Desk {
 public:
  explicit Desk(PendrelModel model) : Desk(optionsOf(model)) {}
  explicit Desk(const simulator::PendrelBenchOptions& options)
      : bench(simulator::makePendrelBench(options)),
        scope_(bench.World),
        main(std::make_unique<Class_Main>()),
        workflows(*main) {
    host->Main = main.get();
    setHost(host);
    workflows.fncWriteCOMportToINI(1);
  }
  ~Desk() { setHost(nullptr); }
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  std::int32_t configure(std::int32_t mode = PD_Mode_ActivityOnly, std::int32_t epoch = 30,
                         const std::string& zone = "EST", bool search = false) {
    return workflows.ConfigureLegacy(static_cast<enmPDLoggingMode>(mode), epoch, subject, zone, true, start,
                                     search, battery, serialNumber);
  }
  std::int32_t retrieve(bool repair = false) {
    return workflows.RetrieveLegacy(subject, false, battery, false, repair);
  }
  void record(simulator::nanoseconds worn, std::int32_t epoch = 30) {
    logger().setUp(ordinaryPendrelSetup(*bench.World, epoch, true));
    logger().wear(worn);
  }

  simulator::SimulatedPendrel& logger() const { return *bench.Logger; }
  const PendrelRecord& read() const { return Inside::of(*workflows.LegacyLogger()).record; }
  bool portClosed() const { return !bench.Dock->isOpen(); }
  std::string settingsFile() const { return bench.World->rootFolder() + "/AppData/HY_Wristlog/Settings.INI"; }
  /// The letters of the commands that the logger heard.
  std::string heard() const {
    std::string letters;
    for (const std::string& command : logger().commands())
      letters += command.starts_with("***") && command.size() > 3 ? command[3] : '.';
    return letters;
  }
  /// Logger seconds of the world's local time, so many seconds from now.
  std::int32_t localIn(std::int32_t seconds) const {
    constexpr std::int32_t EasternStandard = -5 * 3600;
    return static_cast<std::int32_t>(bench.World->now()) + EasternStandard + seconds;
  }

  simulator::PendrelBench bench;

 private:
  platform::WorldScope scope_;

 public:
  std::unique_ptr<Class_Main> main;
  PendrelWorkflows workflows;
  std::shared_ptr<workbench::WatchingHost> host = std::make_shared<workbench::WatchingHost>();
  Class_Subject subject = workbench::jane();
  std::int32_t start = 0;
  float battery = -7;
  std::string serialNumber = "none";
};

using Arrange = std::function<void(Desk&)>;

// clang-format off
inline Arrange line(std::size_t number, const std::string& text) {
  return [=](Desk& desk) { desk.logger().Faults.SetupLines[number] = text; };
}
inline Arrange onCommand(simulator::CommandFaults simulator::PendrelFaults::*faults, char letter, simulator::Fault when = always()) {
  return [=](Desk& desk) { (desk.logger().Faults.*faults)[letter] = when; };
}
inline Arrange onByte(simulator::Fault simulator::PendrelFaults::*fault, simulator::Fault when) {
  return [=](Desk& desk) { desk.logger().Faults.*fault = when; };
}
inline const Arrange
    Nothing = [](Desk&) {},
    NoSettings = [](Desk& desk) { std::filesystem::remove(desk.settingsFile()); },
    NoFolder = [](Desk& desk) { desk.bench.World->Faults.FileWrite.When = always(); },
    HeldPort = [](Desk& desk) { desk.bench.Dock->Faults.Held = true; },
    LockedPort = [](Desk& desk) { desk.bench.Dock->Faults.LockedUp = true; },
    NoLogger = [](Desk& desk) { desk.bench.Dock->pullOut(); };
// clang-format on
inline Arrange settings(const std::string& content) {
  return [=](Desk& desk) { putFile(desk.settingsFile(), content); };
}

}  // namespace hy_wristlog::pendrel_desk
