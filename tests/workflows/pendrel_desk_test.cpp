#include "workflows/pendrel_desk.h"
#include "base/formats.h"
#include "base/inside.h"
#include "base/numbers.h"

namespace hy_wristlog {
namespace {

using namespace pendrel_desk;
using Faults = simulator::PendrelFaults;

constexpr std::int16_t LastPort = 64;

TEST(PendrelPort, IsSearchedPastEverythingElseAndRemembered) {
  auto options = optionsOf(PendrelModel::Checksums);
  options.Dock.ComPort = LastPort;
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
  EXPECT_TRUE(port == LastPort && lastTried == LastPort);
  EXPECT_EQ(text, "64");
  EXPECT_EQ(desk.main->Get_LegacyCOMport(), LastPort);
  EXPECT_NE(contentOf(desk.settingsFile()).find("COMport=64"), std::string::npos);
  for (const auto& dock : world.docks()) EXPECT_FALSE(dock->isOpen());

  NoSettings(desk);
  EXPECT_EQ(desk.configure(1, 30, "EST", true), 0) << "searches before it configures";

  world.Faults.FileWrite.When = always();
  port = 0;
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10002) << "found, but not remembered";
  EXPECT_EQ(port, LastPort);
}

TEST(PendrelPort, IsNotFoundWithoutALogger) {
  Desk desk(PendrelModel::Plain);
  NoLogger(desk);
  std::int16_t port = 7, lastTried = 0;
  std::string text;
  desk.workflows.TryingPort = [&](std::int16_t tried) { lastTried = tried; };
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10003);
  EXPECT_TRUE(port == 7 && lastTried == LastPort);
  // What the ports failed with does not swallow what fails next.
  EXPECT_EQ(desk.workflows.UpdateBatteryDate("010126", false), 3001);

  desk.host->AbortIn = desk.host->Rounds + 3;
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10013);
  EXPECT_EQ(desk.workflows.SearchAndSetLegacyCOMport(port, text), 10003);
}

TEST(PendrelPort, SettingsThatHoldNoPortAreRefused) {
  const std::tuple<Arrange, std::int32_t, std::int16_t> cases[] = {
      {settings("[Communications]\nCOMport= 12 \n"), 0, 12},
      {settings("[Communications]\nCOMport=COM1\n"), 10001, -1},
      {settings("[Communications]\nCOMport=70000\n"), 6, -1},
      {NoSettings, 10001, -1},
      {NoFolder, 10002, -1}};
  for (const auto& [arrange, code, expected] : cases) {
    Desk desk(PendrelModel::Plain);
    arrange(desk);
    std::int16_t port = -1;
    std::string text;
    EXPECT_EQ(desk.workflows.fncReadCOMportFromINI(port, text), code);
    EXPECT_EQ(port, expected);
  }
}

TEST(PendrelBattery, TakesADateThatThereIs) {
  const Arrange noMonth = [](Desk& desk) { desk.logger().parts().Texts.BatteryDate = "02xx26"; };
  const std::tuple<std::int32_t, std::vector<std::string>, Arrange> cases[] = {
      {0, {"280226", "290224", "310199"}, noMonth},
      {10018, {"290226", "000126", "320126", "010026", "011326", "01012", "0101266", "0a0126"}, Nothing},
      {10012, {"010126"}, onCommand(&Faults::Feigned, 'L')},
      {3001, {"010126"}, onCommand(&Faults::Unheeded, 'L')},
      {10008, {"010126"}, HeldPort}};
  for (const auto& [code, texts, arrange] : cases)
    for (const std::string& text : texts) {
      SCOPED_TRACE(text);
      Desk desk(PendrelModel::Checksums);
      arrange(desk);
      EXPECT_EQ(desk.workflows.UpdateBatteryDate(text, false), code);
      EXPECT_TRUE(desk.portClosed());
      EXPECT_EQ(desk.logger().parts().Texts.BatteryDate == text, code == 0);
      EXPECT_EQ(desk.heard().empty(), isOneOf(code, {10018, 10008})) << "then it is left alone";
    }
}

TEST(PendrelStatus, ReadsTheSetupAndChangesNothing) {
  Desk desk(PendrelModel::Steps);
  desk.record(1h);
  desk.logger().forgetCommands();
  EXPECT_EQ(desk.workflows.ReadPendrelSetup(false), 0);
  EXPECT_EQ(desk.heard(), "CO");
  EXPECT_TRUE(desk.logger().recording());
  EXPECT_EQ(desk.workflows.Details().MemorySizeKB, 64);
  EXPECT_NE(desk.workflows.Details().SetupText.find("Subject 17"), std::string::npos);
  NoLogger(desk);
  EXPECT_EQ(desk.workflows.ReadPendrelSetup(false), 3001);
}

using Work = std::function<std::int32_t(Desk&)>;
const Work Configuring = [](Desk&desk) { return desk.configure(); },
           Retrieving = [](Desk&desk) { return desk.retrieve(); };

TEST(PendrelWorkflow, AnAbortEndsItAtTheNextStepWhereverItComes) {
  constexpr double Soon = 1.5;
  for (const auto& [work, worn, last, wakes] : {std::tuple{Configuring, 0h, 99, false},
                                                {Configuring, 0h, 99, true},
                                                {Retrieving, 80h, 80, false},
                                                {Retrieving, 80h, 80, true}}) {
    Desk whole(PendrelModel::Steps);
    whole.main->Let_WakeOnInput(wakes);
    whole.record(worn);
    ASSERT_EQ(work(whole), 0);
    const std::int32_t rounds = whole.host->Rounds;
    ASSERT_GT(rounds, 100);
    for (const std::int32_t part : {0, 1, 10, 30, 60, last}) {
      Desk desk(PendrelModel::Steps);
      desk.main->Let_WakeOnInput(wakes);
      desk.record(worn);
      desk.host->AbortIn = 1 + rounds * part / 100;
      double asked = 0;
      desk.host->EachRound = [&] {
        if (desk.host->Rounds == desk.host->AbortIn) asked = desk.bench.World->elapsed();
      };
      EXPECT_EQ(work(desk), 10013) << part;
      EXPECT_TRUE(!wakes || desk.bench.World->elapsed() < asked + Soon) << part;
      EXPECT_TRUE(desk.portClosed());
      EXPECT_EQ(desk.serialNumber, "none");
      EXPECT_TRUE(worn == 0h || desk.host->Downloaded < whole.host->Downloaded);
      EXPECT_EQ(work(desk), 0) << "the request is spent";
    }
    Desk desk(PendrelModel::Steps);
    desk.record(worn);
    desk.main->AbortComms();
    EXPECT_EQ(work(desk), 0) << "a request between two workflows";
  }
}

std::string krc(Desk& desk, const std::string& name = "out.krc", std::int32_t code = 0) {
  const std::string path = desk.bench.World->rootFolder() + "/" + name;
  EXPECT_EQ(desk.workflows.fncWriteKRCfile(path), code);
  std::string text = contentOf(path);
  std::erase(text, '\r');
  return text;
}

TEST(PendrelKrcFile, HoldsOneValueALine) {
  Desk desk(PendrelModel::Steps);
  PendrelRecord& record = Inside::of(*desk.workflows.LegacyLogger()).record;
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

  const std::pair<std::function<void(PendrelRecord&)>, const char*> changes[] = {
      {[](auto& r) { r.SubjectInfo.clear(); }, "ERROR\n07-"},
      {[](auto& r) { r.SubjectDOB = UnknownDate; }, "\n2\n0\nB901234\n"},
      {[](auto& r) { r.SubjectDOB -= 1; }, "\n2\n1\nB901234\n"},
      {[](auto& r) { r.SubjectGender = "X"; }, "\nB901234\nM\n168.3\n"},
      {[](auto& r) { r.SubjectHeight = -1; }, "\nF\n0.0\n0.0\n007\n"},
      {[](auto& r) { r.SubjectWeight = -1; }, "\n168.3\n-1.0\n007\n"},
      {[](auto& r) { r.AcquisitionMode = PD_Mode_ActivityOnly; }, "\n0\n123456 M\n7\n"},
      {[](auto& r) { r.SerialNumber = "C901234"; }, "\n0\n123456 M\n7\n"}};
  const PendrelRecord kept = record;
  for (const auto& [change, lines] : changes) {
    record = kept;
    change(record);
    EXPECT_NE(krc(desk, "made folder/without extension").find(lines), std::string::npos) << lines;
  }
}

TEST(PendrelKrcFile, IsWrittenWholeOrNotAtAll) {
  Desk desk(PendrelModel::Plain);
  desk.record(1h);
  ASSERT_EQ(desk.retrieve(), 0);
  const std::string before = krc(desk);
  EXPECT_EQ(desk.workflows.fncWriteKRCfile(desk.bench.World->rootFolder() + "/AppData"), 10002) << "a folder";
  desk.bench.World->advance(15s);
  desk.bench.World->Faults.FileWrite = {28, once(1)};
  EXPECT_EQ(krc(desk, "out.krc", 61), before);
  desk.bench.World->advance(15s);
  desk.workflows.LegacyLogger()->Let_MarkerArray({});
  EXPECT_EQ(krc(desk, "out.krc", 9), before);
}

}  // namespace
}  // namespace hy_wristlog
