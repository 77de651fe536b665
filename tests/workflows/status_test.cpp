#include <gtest/gtest.h>

#include <cmath>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using simulator::DockKind;
constexpr std::uint8_t Yes = simulator::FlagYes, No = simulator::FlagNo;

/// What a status is told as; "X" in the long text stands for the model.
struct Told {
  std::string Simple, Long = Simple;
};

// clang-format off
const Told TooMany{"Error: Too Many Docks",
    "More than one X communications dock detected. When using the PC software, please connect only one X "
    "communications docking station to the computer at a time. Remove all but one communications dock."};
const Told DockMissing{"Dock Not Connected",
    "USB Communications Docking Station Not Found. Connect the X communications docking station to an "
    "available USB port on this computer."};
const Told PortTooHigh{"Error: COM port greater than 64",
    "The virtual COM port assigned to the communications docking station is greater than 64. Use 'Device "
    "Manager' to correct this."};
const Told LoggerMissing{"Logger Not Found",
    "Insert the X into its communications docking station, face side up, aligning the logger with the "
    "picture on the dock. (Or the battery in the X may need to be replaced.)"};
const Told PortError{"Error: USB dock COM port error",
    "An error occurred when connecting to the X communications docking station. Please disconnect the "
    "communications dock from the USB port and reconnect it."};
const Told ReadProblem{"Error: Problem Reading Configuration",
    "Error reading logger configuration. Try getting status again. If this problem persists, your logger "
    "may be damaged or have incompatible firmware. Please contact Halcyra Product Support for assistance."};
const Told Unknown{"Error: Unknown Status",
    "Status information in the logger is corrupted or has been lost. If this logger has data you need, "
    "click 'Retrieve' to recover data. Otherwise click 'Configure' to reset the logger's configuration."};
const Told LowBattery{"Ready for Download (low battery)",
    "Ready for Download (data collection stopped due to low battery)"};
const Told Full{"Ready for Download (memory full)"}, Ready{"Ready to Configure"}, Running{"Collecting Data"};
// clang-format on

struct Case {
  Arrange Do;
  Told As;
  bool AsVivid = false;  ///< the text speaks of that model
};

void expectStatus(Workbench& desk, const Case& row) {
  row.Do(desk);
  EXPECT_EQ(desk.status(), 0);
  const std::string model = row.AsVivid || desk.Model == LggrPntr_KRVivid ? "Kestrin Vivid" : "Kestrin 2";
  std::string text = row.As.Long;
  for (std::size_t at; (at = text.find('X')) != std::string::npos;) text.replace(at, 1, model);
  EXPECT_EQ(desk.simple, row.As.Simple);
  EXPECT_EQ(desk.text, text);
  EXPECT_TRUE(desk.portClosed());
  EXPECT_EQ(desk.data != nullptr, row.As.Simple != TooMany.Simple);
  EXPECT_EQ(desk.statusSubject != nullptr, row.As.Simple != TooMany.Simple);
}
void expectStatuses(enmLoggerPointer model, const std::vector<Case>& cases) {
  for (const Case& row : cases) {
    SCOPED_TRACE(std::to_string(&row - cases.data()) + " of model " + std::to_string(model));
    Workbench desk(model);
    expectStatus(desk, row);
  }
}

/// A set-up with these times against now and this data flag.
Arrange holding(std::int64_t starts, std::int64_t ends, std::uint8_t available) {
  return [=](Workbench& desk) {
    const std::int64_t now = desk.bench.World->now();
    desk.stored().set(block::StartTime, now + starts);
    desk.stored().set(block::StopTime, now + ends);
    desk.stored().set(block::ZoneBias, 300);
    desk.stored().set(block::DataAvailable, available);
  };
}
const Arrange Nothing = [](auto&) {};

/// The second pass looks into a Kestrin Vivid's dock: this one, with a logger or not, held or not.
Arrange vividDock(const Arrange& first, bool withLogger = true, bool held = false) {
  return [=](Workbench& desk) {
    first(desk);
    simulator::SimulatedDock& dock = desk.bench.World->addDock({DockKind::Quillander, 40, {}});
    if (withLogger) dock.insert(desk.bench.World->addLogger({}));
    dock.Faults.Held = held;
  };
}

TEST(Status, StatesOfDockAndLogger) {
  const Told ended{"Ready for Download (data collection stopped)"};
  const Arrange full = set(block::MemoryFull, Yes), shut = set(block::Counters, 0x20),
                stranger = set(block::Version, 9);
  // clang-format off
  for (const enmLoggerPointer model : Models)
    expectStatuses(model, {
        {SecondDock, TooMany}, {NoDock, DockMissing}, {NoLogger, LoggerMissing}, {Silent, LoggerMissing},
        {model == LggrPntr_KRII ? vividDock(stranger) : stranger, ReadProblem},
        {set(block::ActivityCalibration, 0), Ready}, {holding(-900, -300, No), Ready},
        {holding(900, -300, No), Ready}, {holding(-900, 300, Yes), Running},
        {holding(-900, -300, Yes), ended}, {holding(900, 1800, Yes), Unknown},
        {holding(-900, 300, 7), Unknown}, {all({holding(900, 1800, Yes), shut}), LowBattery},
        {all({holding(900, 1800, Yes), full}), Full},
        {all({holding(-900, 1800, No), full}), Ready}});
  // clang-format on
  // A start at 2026-03-02 14:00 UTC and 40 minutes, five hours behind.
  const std::string time = "3/2/2026 9:40:00 AM";
  const Arrange later = holding(2400, 9000, 0);
  expectStatuses(LggrPntr_KRVivid, {{later, {"Waiting for Delayed Start", "Start Time: " + time}}});
  expectStatuses(LggrPntr_KRII, {{later, {"Waiting for Delayed Start (" + time + ")"}}});
  for (const std::int64_t left : {21, 20}) {  // an old one has no flag for a full memory
    Workbench desk(LggrPntr_KRII, optionsOf(LggrPntr_KRII, "00.01.0029"));
    const auto next = static_cast<std::int64_t>(desk.logger().memory().size()) - left;
    const Arrange nearlyFull = all({holding(-900, 300, Yes), set(block::NextAddress, next)});
    expectStatus(desk, {nearlyFull, left == 20 ? Full : Running});
  }
}

TEST(Status, TheSecondOfTheStart) {
  // When the logger is asked is the same in every run.
  Workbench trial(LggrPntr_KRVivid);
  const std::int64_t began = trial.bench.World->now();
  trial.status();
  const std::int64_t asked = std::llround((trial.data->Get_CurrentGMTtime() - 25569) * 86400) - began;
  for (const std::int64_t later : {-1, 0, 1})
    for (const std::uint8_t available : {Yes, No}) {
      Workbench desk(LggrPntr_KRVivid);
      holding(asked + later, asked + 600, available)(desk);
      desk.status();
      const std::string with = later < 0 ? "Collecting Data" : "Error: Unknown Status";
      const std::string without = later > 0 ? "Waiting for Delayed Start" : "Ready to Configure";
      EXPECT_EQ(desk.simple, available == Yes ? with : without) << later;
    }
}

TEST(Status, PortNumbers) {
  for (const std::int32_t port : {64, 65, 0}) {
    BenchOptions options = optionsOf(LggrPntr_KRII);
    options.Dock.ComPort = port;
    if (port == 0) options.Dock = {DockKind::TolkaFirst, 33, {}};  // a dock that does not say its port
    Workbench desk(LggrPntr_KRII, options);
    expectStatus(desk, {Nothing, port == 0 ? DockMissing : port == 64 ? Ready : PortTooHigh});
  }
}

TEST(Status, FailuresOfTheFirstPass) {
  const Arrange pulledOut = [](auto& desk) { desk.bench.Dock->pullOutAfterBytes(60); };
  // clang-format off
  expectStatuses(LggrPntr_KRVivid, {
      {Held, PortError}, {openFails(8005, once()), PortError}, {LockedUp, LoggerMissing},
      {badConfig(once()), Ready}, {badConfig({0, 2}), ReadProblem}, {badConfig(), ReadProblem},
      {badLines({0, 3}), ReadProblem}, {pulledOut, LoggerMissing}});
  expectStatuses(LggrPntr_KRII, {
      {LockedUp, DockMissing, true}, {badConfig(), DockMissing, true},
      {vividDock(LockedUp, false), LoggerMissing, true}, {vividDock(LockedUp, true, true), PortError, true},
      {vividDock(LockedUp), PortError, true}, {vividDock(badConfig({0, 2})), ReadProblem},
      {vividDock(badConfig({0, 2}), true, true), PortError, true}});
  // clang-format on
}

TEST(Status, CodesAndOutputs) {
  for (const enmLoggerPointer model : Models) {
    const bool vivid = model == LggrPntr_KRVivid;
    Workbench failing(model);
    openFails(8010)(failing);
    EXPECT_EQ(failing.status(), 8010);
    EXPECT_TRUE(failing.data == nullptr && failing.battery == -7);

    const auto desk = recorded(model);
    desk->main->AbortComms();  // between two workflows: of no effect
    EXPECT_EQ(desk->status(), 0);
    EXPECT_EQ(desk->simple, Running.Simple);
    EXPECT_EQ(desk->data->Get_SerialNumber(), vivid ? "V0012345" : "K0054321");
    EXPECT_NEAR(desk->battery, vivid ? 365 : 30, 0.5);
    const Class_Subject& who = *desk->statusSubject;
    EXPECT_EQ(who.Get_Identity() + who.Get_Initials() + who.Get_Gender(), "Subject 17ABF");
    EXPECT_TRUE(desk->logger().recording());
  }
}

TEST(Status, AnAbortEndsTheWaiting) {
  for (const enmLoggerPointer model : Models)
    for (const bool silent : {false, true}) {
      Workbench trial(model);
      if (silent) Silent(trial);
      trial.status();
      for (std::int32_t round = 1; round < trial.host->Rounds; round += 97) {
        SCOPED_TRACE("round " + std::to_string(round));
        Workbench desk(model);
        if (silent) Silent(desk);
        double asked = 0;
        desk.host->EachRound = [&] {
          if (desk.host->Rounds == round) asked = desk.bench.World->elapsed();
        };
        desk.host->AbortIn = round;
        EXPECT_EQ(desk.status(), 10013);
        EXPECT_EQ(desk.simple, "Aborted");
        EXPECT_EQ(desk.data, nullptr);
        EXPECT_LT(desk.bench.World->elapsed() - asked, 3);
        EXPECT_TRUE(desk.portClosed());
        desk.host->AbortIn = -1;
        desk.logger().Faults.Silent = false;
        EXPECT_EQ(desk.status(), 0);
        EXPECT_EQ(desk.simple, Ready.Simple);
      }
    }
}

}  // namespace
}  // namespace hy_wristlog::workbench
