#include <gtest/gtest.h>

#include "base/formats.h"
#include "workflows/legacy_desk.h"
#include "workflows/return_codes.h"

namespace hy_wristlog {
namespace {

using namespace legacy_desk;
using Faults = simulator::PendrelFaults;

TEST(LegacyPort, IsSearchedPastEverythingElseAndRemembered) {
  auto options = optionsOf(PendrelModel::Checksums);
  options.Dock.ComPort = 9;
  Desk desk(options);
  simulator::SimulatedWorld& world = *desk.bench.World;
  world.addDock({simulator::DockKind::Quillander, 1, {}});
  world.addDock({simulator::DockKind::Pendreader, 2, {}});
  world.addDock({simulator::DockKind::Pendreader, 3, {}}).Faults.LockedUp = true;
  world.addDock({simulator::DockKind::Pendreader, 4, {}}).Faults.Held = true;
  std::int16_t port = 0, lastTried = 0;
  std::string text;
  desk.workflows.TryingPort = [&](std::int16_t tried) { lastTried = tried; };

  ASSERT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 0);
  EXPECT_EQ(port, 9);
  EXPECT_EQ(text, "9");
  EXPECT_EQ(lastTried, 9) << "the search ends there";
  EXPECT_EQ(desk.main->Get_LegacyCOMport(), 9);
  EXPECT_NE(contentOf(desk.settingsFile()).find("COMport=9"), std::string::npos);
  for (const auto& dock : world.docks()) EXPECT_FALSE(dock->isOpen());

  port = 0;
  EXPECT_EQ(desk.workflows.fncReadCOMportFromINI(port, text), 0);
  EXPECT_EQ(port, 9);
  NoSettings(desk);
  EXPECT_EQ(desk.configure(1, 30, "EST", true), 0) << "searches before it configures";

  world.Faults.FileWrite.When = always();
  port = 0;
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10002) << "found, but not remembered";
  EXPECT_EQ(port, 9);
  EXPECT_EQ(desk.configure(1, 30, "EST", true), 10002);
}

TEST(LegacyPort, IsNotFoundWithoutALogger) {
  Desk desk(PendrelModel::Plain);
  NoLogger(desk);
  std::int16_t port = 7;
  std::string text;
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10003);
  EXPECT_EQ(port, 7);
  // What the ports failed with does not swallow what fails next.
  EXPECT_EQ(desk.workflows.UpdateBatteryDate("010126", false), 3001);

  desk.host->AbortIn = desk.host->Rounds + 3;
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10013);
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10003);
}

TEST(LegacyPort, SettingsThatHoldNoPortAreRefused) {
  const struct {
    Arrange Before;
    std::int32_t Code;
    std::int16_t Port = -1;
  } cases[] = {{settings("[Communications]\nCOMport= 12 \n"), 0, 12},
               {settings("[communications]\r\ncomport=\"33\"\r\n"), 0, 33},
               {settings("[Communications]\nCOMport=\n"), 10001},
               {settings("[Communications]\nCOMport=COM1\n"), 10001},
               {settings("[Other]\nCOMport=1\n"), 10001},
               {settings(""), 10001},
               {settings("[Communications]\nCOMport=70000\n"), 6},
               {NoSettings, 10001},
               {NoFolder, 10002}};
  for (const auto& each : cases) {
    Desk desk(PendrelModel::Plain);
    each.Before(desk);
    std::int16_t port = -1;
    std::string text;
    EXPECT_EQ(desk.workflows.fncReadCOMportFromINI(port, text), each.Code);
    EXPECT_EQ(port, each.Port);
  }
}

TEST(LegacyBattery, TakesADateThatThereIs) {
  const struct {
    std::string Text;
    std::int32_t Code;
    Arrange Before = Nothing;
  } cases[] = {{"280226", 0},
               {"290224", 0},
               {"310199", 0},
               {"310299", 10018},
               {"290226", 10018},
               {"000126", 10018},
               {"320126", 10018},
               {"010026", 10018},
               {"011326", 10018},
               {"", 10018},
               {"01012", 10018},
               {"0101266", 10018},
               {"0a0126", 10018},
               {"0101-1", 10018},
               {"010126", 10012, onCommand(&Faults::Feigned, 'L')},
               {"010126", 3001, onCommand(&Faults::Unheeded, 'L')},
               {"010126", 10008, HeldPort},
               {"010126", 10001, NoSettings},
               {"010126", 10009, line(7, "")}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.Text);
    Desk desk(PendrelModel::Checksums);
    each.Before(desk);
    EXPECT_EQ(desk.workflows.UpdateBatteryDate(each.Text, false), each.Code);
    EXPECT_TRUE(desk.portClosed());
    EXPECT_EQ(desk.logger().parts().Texts.BatteryDate == each.Text, each.Code == 0);
    EXPECT_EQ(desk.heard().empty(), isOneOf(each.Code, {10018, 10008, 10001})) << "then it is left alone";
  }
}

TEST(LegacyStatus, ReadsTheSetupAndChangesNothing) {
  Desk desk(PendrelModel::Steps);
  desk.record(1h);
  desk.logger().forgetCommands();
  EXPECT_EQ(desk.workflows.ReadLegacySetup(false), 0);
  EXPECT_EQ(desk.heard(), "CO");
  EXPECT_TRUE(desk.logger().recording());
  const LegacyDetails details = desk.workflows.Details();
  EXPECT_EQ(details.DeviceText, "Pendrel Steps");
  EXPECT_EQ(details.MemorySizeKB, 64);
  EXPECT_NE(details.SetupText.find("Subject 17"), std::string::npos);
  NoLogger(desk);
  EXPECT_EQ(desk.workflows.ReadLegacySetup(false), 3001);
}

std::string krc(Desk& desk, const std::string& name = "out.krc") {
  const std::string path = desk.bench.World->rootFolder() + "/" + name;
  EXPECT_EQ(desk.workflows.fncWriteKRCfile(path), 0);
  std::string text = contentOf(path);
  std::erase(text, '\r');
  return text;
}

TEST(LegacyKrcFile, HoldsOneValueALine) {
  Desk desk(PendrelModel::Steps);
  PendrelRecord& record = desk.workflows.LegacyLogger()->inside().record;
  record.SubjectInfo = "J\xFCrgen" + std::string(58, '.');
  record.StartDate = dateSerial(2026, 2, 7);
  record.StartTime = timeSerial(8, 5, 59);
  record.EpochLength = 30;
  record.SubjectDOB = dateSerial(2026, 3, 2) - 364;
  record.SerialNumber = "B9012345";
  record.FirmwareVersion = 0x90;
  record.SubjectGender = "F";
  record.SubjectHeight = 168.25F;
  record.SubjectWeight = 70;
  record.Resets = 7;
  record.BatteryDate = dateSerial(2026, 2, 20);
  record.AcquisitionMode = PD_Mode_ActivityAndSteps;
  record.ActivityArray = {0, 123456, 7};
  record.StepsArray = {12, 0, EmptySteps};
  record.MarkerArray = {Tristate::Empty, Tristate::True, Tristate::False};
  record.Samples = 3;
  EXPECT_EQ(krc(desk), "Jürgen" + std::string(58, '.') +
                           "\n07-Feb-2026\n08:05\n2\n0\nB901234\nF\n168.3\n70.0\n007\n0170\n"
                           "0 , 12.0\n123456 , 0.0 M\n7 , 0.0\n");
  EXPECT_NE(contentOf(desk.bench.World->rootFolder() + "/out.krc").find("F\r\n"), std::string::npos);

  const auto changed = [&](const std::function<void(PendrelRecord&)>& change) {
    const PendrelRecord kept = record;
    change(record);
    const std::string text = krc(desk, "made folder/without extension");
    record = kept;
    return text;
  };
  const auto has = [](const std::string& text, const std::string& lines) {
    return text.find("\n" + lines + "\n") != std::string::npos;
  };
  EXPECT_TRUE(changed([](auto& r) { r.SubjectInfo.clear(); }).starts_with("ERROR\n07-"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SubjectDOB = UnknownDate; }), "2\n0\nB901234"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SubjectDOB -= 1; }), "2\n1\nB901234"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SubjectDOB -= 365 * 40; }), "2\n40\nB901234"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SubjectGender = "X"; }), "B901234\nM\n168.3"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SubjectHeight = -1; }), "F\n0.0\n0.0\n007"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SubjectWeight = -1; }), "168.3\n-1.0\n007"));
  EXPECT_TRUE(has(changed([](auto& r) { r.Resets = -1; }), "70.0\n-001\n0170"));
  EXPECT_TRUE(has(changed([](auto& r) { r.EpochLength = -1; }), "08:05\n0\n0"));
  EXPECT_TRUE(has(changed([](auto& r) { r.AcquisitionMode = PD_Mode_ActivityOnly; }), "0\n123456 M\n7"));
  EXPECT_TRUE(has(changed([](auto& r) { r.SerialNumber = "C901234"; }), "0\n123456 M\n7"));
}

TEST(LegacyKrcFile, IsWrittenWholeOrNotAtAll) {
  Desk desk(PendrelModel::Plain);
  desk.record(1h);
  ASSERT_EQ(desk.retrieve(), 0);
  const std::string before = krc(desk), path = desk.bench.World->rootFolder() + "/out.krc";
  const auto write = [&](const std::string& to) { return desk.workflows.fncWriteKRCfile(to); };
  EXPECT_EQ(write(path + "/below a file/x.krc"), 10002);
  EXPECT_EQ(write(desk.bench.World->rootFolder() + "/AppData"), 10002) << "a folder has the name";
  desk.bench.World->advance(15s);

  desk.bench.World->Faults.FileWrite = {28, once(1)};
  EXPECT_EQ(write(path), 61);
  desk.bench.World->advance(15s);
  desk.workflows.LegacyLogger()->Let_MarkerArray({});
  EXPECT_EQ(write(path), 9);
  std::string after = contentOf(path);
  std::erase(after, '\r');
  EXPECT_EQ(after, before);
  desk.bench.World->Faults.FileWrite = {13, always()};
  EXPECT_EQ(write(path), 10002);
}

}  // namespace
}  // namespace hy_wristlog
