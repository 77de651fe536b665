#include <gtest/gtest.h>

#include <cmath>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using simulator::always;
using simulator::DockKind;
using simulator::once;

/// "X" stands for the model that the texts name.
std::string naming(std::string text, const std::string& model) {
  for (std::size_t at = text.find('X'); at != std::string::npos; at = text.find('X', at + model.size()))
    text.replace(at, 1, model);
  return text;
}

const std::string TooManyText =
    "More than one X communications dock detected. When using the PC software, please connect only one X "
    "communications docking station to the computer at a time. Remove all but one communications dock.";
const std::string NoDockText =
    "USB Communications Docking Station Not Found. Connect the X communications docking station to an "
    "available USB port on this computer.";
const std::string PortTooHighText =
    "The virtual COM port assigned to the communications docking station is greater than 64. Use 'Device "
    "Manager' to correct this.";
const std::string NoLoggerText =
    "Insert the X into its communications docking station, face side up, aligning the logger with the "
    "picture "
    "on the dock. (Or the battery in the X may need to be replaced.)";
const std::string PortErrorText =
    "An error occurred when connecting to the X communications docking station. Please disconnect the "
    "communications dock from the USB port and reconnect it.";
const std::string ReadProblemText =
    "Error reading logger configuration. Try getting status again. If this problem persists, your logger may "
    "be damaged or have incompatible firmware. Please contact Halcyra Product Support for assistance.";
const std::string UnknownText =
    "Status information in the logger is corrupted or has been lost. If this logger has data you need, click "
    "'Retrieve' to recover data. Otherwise click 'Configure' to reset the logger's configuration.";

struct Case {
  const char* Name;
  Arrange Do;
  std::string Simple, Long = {};  ///< no long text: the same
  bool AsVivid = false;           ///< the texts speak of that model
};

void expectStatus(Workbench& desk, const Case& row) {
  SCOPED_TRACE(std::string(row.Name) + (desk.Model == LggrPntr_KRVivid ? ", Vivid" : ", Kestrin 2"));
  row.Do(desk);
  EXPECT_EQ(desk.status(), 0);
  const bool asVivid = row.AsVivid || desk.Model == LggrPntr_KRVivid;
  const std::string model = asVivid ? "Kestrin Vivid" : "Kestrin 2";
  EXPECT_EQ(desk.simple, row.Simple);
  EXPECT_EQ(desk.text, row.Long.empty() ? row.Simple : naming(row.Long, model));
  EXPECT_TRUE(desk.portClosed());
  const bool handsOut = row.Simple != "Error: Too Many Docks";
  EXPECT_EQ(desk.data != nullptr, handsOut);
  EXPECT_EQ(desk.statusSubject != nullptr, handsOut);
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

simulator::SimulatedDock& addVividDock(Workbench& desk, bool withLogger) {
  simulator::SimulatedDock& dock = desk.bench.World->addDock({DockKind::Quillander, 40, {}});
  if (withLogger) dock.insert(desk.bench.World->addLogger({}));
  return dock;
}

TEST(Status, StatesOfDockAndLogger) {
  const std::uint8_t yes = simulator::FlagYes, no = simulator::FlagNo;
  // clang-format off
  const std::vector<Case> cases = {
      {"two docks", SecondDock, "Error: Too Many Docks", TooManyText},
      {"no dock", NoDock, "Dock Not Connected", NoDockText},
      {"empty dock", NoLogger, "Logger Not Found", NoLoggerText},
      {"silent logger", Silent, "Logger Not Found", NoLoggerText},
      {"fresh", [](auto&) {}, "Ready to Configure"},
      {"over", holding(-900, -300, no), "Ready to Configure"},
      {"begun without data", holding(-900, 300, no), "Ready to Configure"},
      {"ended before its start", holding(900, -300, no), "Ready to Configure"},
      {"running", holding(-900, 300, yes), "Collecting Data"},
      {"ended", holding(-900, -300, yes), "Ready for Download (data collection stopped)"},
      {"data before the start", holding(900, 1800, yes), "Error: Unknown Status", UnknownText},
      {"unknown flag", holding(-900, 300, 7), "Error: Unknown Status", UnknownText},
      {"shut down", all({holding(900, 1800, yes), set(block::Counters, 0x20)}),
       "Ready for Download (low battery)", "Ready for Download (data collection stopped due to low battery)"},
      {"full", all({holding(900, 1800, yes), set(block::MemoryFull, yes)}), "Ready for Download (memory full)"},
      {"full without data", all({holding(-900, 1800, no), set(block::MemoryFull, yes)}), "Ready to Configure"},
      {"no activity calibration", set(block::ActivityCalibration, 0), "Ready to Configure"},
      {"another structure", set(block::Version, 9), "Error: Problem Reading Configuration", ReadProblemText},
  };
  // clang-format on
  for (const enmLoggerPointer model : Models) {
    for (const Case& row : cases) {
      Workbench desk(model);
      const bool elsewhere = model == LggrPntr_KRII && row.Long == ReadProblemText;
      if (elsewhere) addVividDock(desk, true);
      expectStatus(desk, row);
    }
  }
}

TEST(Status, ByModelAndFirmware) {
  for (const std::int64_t left : {21, 20}) {
    BenchOptions options = optionsOf(LggrPntr_KRII);  // without a flag for a full memory
    options.Logger.Firmware = "00.01.0029";
    Workbench desk(LggrPntr_KRII, options);
    const auto size = static_cast<std::int64_t>(desk.logger().memory().size());
    expectStatus(desk,
                 {"", all({holding(-900, 300, simulator::FlagYes), set(block::NextAddress, size - left)}),
                  left == 20 ? "Ready for Download (memory full)" : "Collecting Data"});
  }
  // 2026-03-02 14:00 UTC and 40 minutes, five hours behind.
  const std::string time = "3/2/2026 9:40:00 AM";
  Workbench vivid(LggrPntr_KRVivid);
  expectStatus(vivid, {"", holding(2400, 9000, 0), "Waiting for Delayed Start", "Start Time: " + time});
  Workbench kestrin(LggrPntr_KRII);
  expectStatus(kestrin, {"", holding(2400, 9000, 0), "Waiting for Delayed Start (" + time + ")"});
}

TEST(Status, TheSecondOfTheStart) {
  // When the logger is asked is the same in every run.
  Workbench trial(LggrPntr_KRVivid);
  trial.status();
  const auto asked =
      static_cast<std::int64_t>(std::llround((trial.data->Get_CurrentGMTtime() - 25569) * 86400));
  for (const std::int64_t later : {-1, 0, 1}) {
    for (const bool available : {false, true}) {
      Workbench desk(LggrPntr_KRVivid);
      desk.stored().set(block::StartTime, asked + later);
      desk.stored().set(block::StopTime, asked + 600);
      desk.stored().set(block::DataAvailable, available ? simulator::FlagYes : simulator::FlagNo);
      desk.status();
      const std::string wanted = available ? (later < 0 ? "Collecting Data" : "Error: Unknown Status")
                                           : (later > 0 ? "Waiting for Delayed Start" : "Ready to Configure");
      EXPECT_EQ(desk.simple, wanted) << later;
    }
  }
}

TEST(Status, PortNumbers) {
  for (const enmLoggerPointer model : Models) {
    for (const std::int32_t port : {64, 65, 200}) {
      BenchOptions options = optionsOf(model);
      options.Dock.ComPort = port;
      Workbench desk(model, options);
      desk.status();
      EXPECT_EQ(desk.simple, port == 64 ? "Ready to Configure" : "Error: COM port greater than 64") << port;
      EXPECT_EQ(desk.text == PortTooHighText, port > 64);
    }
  }
  BenchOptions options = optionsOf(LggrPntr_KRII);
  options.Dock = {DockKind::TolkaFirst, 33, {}};  // a dock that does not say its port
  Workbench desk(LggrPntr_KRII, options);
  expectStatus(desk, {"", [](auto&) {}, "Dock Not Connected", NoDockText});
}

TEST(Status, FailuresOfTheFirstPass) {
  const std::string problem = "Error: Problem Reading Configuration";
  const std::string portError = "Error: USB dock COM port error";
  // clang-format off
  const std::vector<Case> vivid = {
      {"in use", [](auto& d) { d.bench.Dock->Faults.Held = true; }, portError, PortErrorText},
      {"in use once", openFails(8005, once()), portError, PortErrorText},
      {"locked up", LockedUp, "Logger Not Found", NoLoggerText},
      {"cured by a reset", badConfig(once()), "Ready to Configure"},
      {"mended too late", badConfig({0, 2}), problem, ReadProblemText},
      {"bad config", badConfig(always()), problem, ReadProblemText},
      {"bad lines", badLines({0, 3}), problem, ReadProblemText},
      {"pulled out", [](auto& d) { d.bench.Dock->pullOutAfterBytes(60); }, "Logger Not Found", NoLoggerText},
  };
  // clang-format on
  for (const Case& row : vivid) expectStatus(*std::make_unique<Workbench>(LggrPntr_KRVivid), row);
  // The second pass looks into a Kestrin Vivid's dock.
  const auto inVividDock = [](const Arrange& first, bool withLogger, bool held) {
    return [=](Workbench& desk) {
      first(desk);
      addVividDock(desk, withLogger).Faults.Held = held;
    };
  };
  // clang-format off
  const std::vector<Case> kestrin2 = {
      {"locked up", LockedUp, "Dock Not Connected", NoDockText, true},
      {"bad config", badConfig(always()), "Dock Not Connected", NoDockText, true},
      {"locked up, other dock empty", inVividDock(LockedUp, false, false), "Logger Not Found", NoLoggerText, true},
      {"locked up, other dock held", inVividDock(LockedUp, true, true), portError, PortErrorText, true},
      {"locked up, other dock well", inVividDock(LockedUp, true, false), portError, PortErrorText, true},
      {"bad config, other dock well", inVividDock(badConfig({0, 2}), true, false), problem, ReadProblemText},
      {"bad config, other dock held", inVividDock(badConfig({0, 2}), true, true), portError, PortErrorText, true},
  };
  // clang-format on
  for (const Case& row : kestrin2) expectStatus(*std::make_unique<Workbench>(LggrPntr_KRII), row);
}

TEST(Status, CodesAndOutputs) {
  for (const enmLoggerPointer model : Models) {
    Workbench refused(model);
    for (const std::int32_t type : {2, 3, -1}) {
      refused.Model = static_cast<enmLoggerPointer>(type);
      EXPECT_EQ(refused.status(), 10009);
      EXPECT_EQ(refused.data, nullptr);
    }
    EXPECT_TRUE(refused.logger().commands().empty());

    Workbench failing(model);
    openFails(8010, always())(failing);
    EXPECT_EQ(failing.status(), 8010);
    EXPECT_EQ(failing.data, nullptr);

    auto desk = recorded(model);
    desk->main->AbortComms();  // between two workflows: of no effect
    EXPECT_EQ(desk->status(), 0);
    EXPECT_EQ(desk->simple, "Collecting Data");
    EXPECT_EQ(desk->data->Get_SerialNumber(), model == LggrPntr_KRVivid ? "V0012345" : "K0054321");
    EXPECT_NEAR(desk->battery, model == LggrPntr_KRVivid ? 365 : 30, 0.5);
    const Class_Subject& who = *desk->statusSubject;
    EXPECT_EQ(who.Get_Identity() + who.Get_Initials() + who.Get_Gender(), "Subject 17ABF");
    EXPECT_EQ(who.Get_GUID(), "0123456789ABCDEF0123456789ABCDEF");
    EXPECT_EQ(who.Get_DOB(), dateSerial(1984, 5, 6));
    EXPECT_FLOAT_EQ(who.Get_Weight(), 72.3F);
    EXPECT_FLOAT_EQ(who.Get_Height(), 168.5F);
    EXPECT_TRUE(desk->logger().recording());

    Workbench noDock(model);
    NoDock(noDock);
    noDock.status();
    EXPECT_EQ(noDock.battery, -7);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
