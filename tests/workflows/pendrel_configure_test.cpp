#include "timezones/Class_TimeZoneTools.h"
#include "workflows/pendrel_desk.h"

namespace hy_wristlog {
namespace {

using namespace pendrel_desk;
using Faults = simulator::PendrelFaults;

TEST(PendrelConfigure, SetsUpEachModelAndItRecordsWhatWasAskedFor) {
  const std::tuple<PendrelModel, std::int32_t, std::int32_t, std::string> cases[] = {
      {PendrelModel::Plain, 1, 60, "CBADECGHF"},
      {PendrelModel::Checksums, 2, 15, "CBADECGW"},
      {PendrelModel::Steps, 1, 30, "COXBADEPCOGW"},
      {PendrelModel::Steps, 2, 30, "COXBADEPCOGW"}};
  for (const auto& [model, mode, epoch, heard] : cases) {
    SCOPED_TRACE(heard + std::to_string(mode));
    Desk desk(model);
    ASSERT_EQ(desk.configure(mode, epoch), 0);
    EXPECT_EQ(desk.heard(), heard);
    EXPECT_TRUE(desk.portClosed() && desk.logger().waiting());
    EXPECT_EQ(desk.battery, 180);
    EXPECT_EQ(desk.serialNumber, desk.read().SerialNumber);
    // The world begins at 09:00:00 in the zone of the recording; the port's two seconds have passed by then.
    EXPECT_EQ(formatDate(Pendrel::fncLoggerSecondsToDate(desk.start), "yyyy-mm-dd hh:nn:ss"),
              "2026-03-02 09:02:00");
    EXPECT_EQ(desk.logger().parts().Texts.StartDate + desk.logger().parts().Texts.StartTime, "0203260902");

    // The port closes as soon as the logger knows its wait, which lets it begin ten seconds early at most.
    while (!desk.logger().recording() && desk.localIn(0) < desk.start + 60) desk.bench.World->advance(1s);
    EXPECT_LE(desk.localIn(0), desk.start);
    EXPECT_GE(desk.localIn(0), desk.start - 10);

    desk.logger().wear(2h);
    desk.subject = {};
    ASSERT_EQ(desk.retrieve(), 0);
    const Class_Pendrel& logger = *desk.workflows.LegacyLogger();
    EXPECT_NEAR(logger.Get_Samples(), 2 * 3600 / epoch, 120 / epoch + 1);
    EXPECT_EQ(logger.Get_EpochLength(), epoch);
    EXPECT_EQ(logger.Get_AcquisitionMode(), model == PendrelModel::Steps ? mode : PD_Mode_ActivityOnly);
    EXPECT_TRUE(logger.Get_TimeZoneAbbrev() == "EST" && logger.Get_GMToffset() == -300);
    EXPECT_TRUE(logger.Get_AutoDSTadjust());
    EXPECT_EQ(desk.subject.Get_Identity() + desk.subject.Get_Initials() + desk.subject.Get_Gender(),
              "JaneJDF");
    EXPECT_EQ(desk.subject.Get_DOB(), dateSerial(1984, 5, 6));
    EXPECT_FLOAT_EQ(desk.subject.Get_Height() + desk.subject.Get_Weight(), 168.5F + 70.1F);
  }
}

TEST(PendrelConfigure, FillsInWhatTheSubjectLacksAndKeepsTheMemoryWhenTold) {
  Desk desk(PendrelModel::Steps);
  desk.record(1h);
  desk.logger().forgetCommands();
  desk.subject = {};
  desk.main->Let_LegacyClearMemoryOnConfigure(false);
  ASSERT_EQ(desk.configure(), 0);
  EXPECT_EQ(desk.heard(), "COBADEPCOGW") << "nothing is cleared";
  EXPECT_EQ(desk.subject.Get_Identity(), desk.serialNumber);
  EXPECT_EQ(desk.subject.Get_GUID().size(), 32U);
  EXPECT_EQ(desk.read().SubjectGUID, desk.subject.Get_GUID());
}

/// A start is given in the local time of the recording's zone, and cut to its minute.
TEST(PendrelConfigure, HoldsTheStartWithinItsLimits) {
  constexpr std::int32_t Day = 86400;
  const struct {
    std::int32_t In, Epoch, Code;
    std::string Zone = "SAP";
  } cases[] = {
      {-60, 30, 10007},  {0, 30, 10007},        {50, 30, 10007},  // passed when the logger has been read
      {150, 30, 0},      {179, 30, 0},          {32896 * 15 - 60, 15, 0}, {32896 * 15 + 120, 15, 10007},
      {22 * Day, 60, 0}, {23 * Day, 60, 10007}, {150, 30, 10007, "GMT"},  {150 + 5 * 3600, 30, 0, "GMT"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(std::to_string(each.In) + " " + each.Zone);
    Desk desk(PendrelModel::Steps);
    desk.start = desk.localIn(each.In);
    const std::int32_t wanted = desk.start;
    EXPECT_EQ(desk.configure(1, each.Epoch, each.Zone), each.Code);
    EXPECT_EQ(desk.start, each.Code == 0 ? wanted / 60 * 60 : wanted);
    EXPECT_EQ(desk.heard().find('X') != std::string::npos, each.Code == 0)
        << "refused with its recording kept";
    EXPECT_TRUE(desk.portClosed());
  }
}

/// The year is told in two digits, and 30 means 1930.
TEST(PendrelConfigure, AYearThatTwoDigitsCannotSayIsRefusedBeforeAnythingIsLost) {
  constexpr std::int32_t TwelveHours = 12 * 3600;
  const std::tuple<int, std::int32_t, std::int32_t> cases[] = {
      {2029, 0, 0}, {2029, TwelveHours, 0}, {2029, 2 * TwelveHours, 10018}, {2030, 0, 10018}};
  for (const auto& [year, in, code] : cases) {
    auto options = optionsOf(PendrelModel::Steps);
    options.World.Begins = std::chrono::sys_days{std::chrono::year{year} / 12 / 31} + 14h;
    Desk desk(options);
    desk.start = in == 0 ? 0 : desk.localIn(in);
    EXPECT_EQ(desk.configure(), code) << year << ' ' << in;
    EXPECT_EQ(desk.heard(), code == 0 ? "COXBADEPCOGW" : "CO");
  }
}

TEST(PendrelConfigure, AWinterStartAskedForInSummerKeepsItsOwnOffset) {
  auto options = optionsOf(PendrelModel::Checksums);
  options.World.Begins = std::chrono::sys_days{std::chrono::year{2026} / 10 / 30} + 14h;
  Desk desk(options);
  desk.start = static_cast<std::int32_t>(
      Pendrel::fncDateToLoggerSeconds(dateSerial(2026, 11, 2) + timeSerial(9, 0, 0)));
  ASSERT_EQ(desk.configure(1, 60), 0);
  EXPECT_EQ(desk.read().GMToffset, -300);
  EXPECT_EQ(desk.logger().parts().Texts.StartTime, "0900");
}

TEST(PendrelConfigure, EveryStateHasItsCode) {
  const struct {
    const char* What;
    PendrelModel Model;
    Arrange Before;
    std::int32_t Code, Mode = 1, Epoch = 30;
    std::string Zone = "EST";
  } cases[] = {
      {"mode before epoch", PendrelModel::Steps, Nothing, 10005, 3, 7},
      {"epoch 120", PendrelModel::Steps, Nothing, 10006, 1, 120},
      {"zone", PendrelModel::Plain, Nothing, 10019, 1, 30, "est"},
      {"the machine's zone", PendrelModel::Plain, Nothing, 0, 1, 30, ""},
      {"no settings", PendrelModel::Plain, NoSettings, 10001},
      {"no folder", PendrelModel::Plain, NoFolder, 10002},
      {"port 0", PendrelModel::Plain, settings("[Communications]\nCOMport=0\n"), 10106},
      {"locked up", PendrelModel::Plain, LockedPort, 8015},
      {"wrong echo", PendrelModel::Plain, onByte(&Faults::AlterEcho, always()), 3003},
      {"unknown family", PendrelModel::Plain, line(7, "Z90 80 1234 FF 00"), 10009},
      {"no firmware", PendrelModel::Steps, line(7, "B00 80 1234 FF 00"), 10010},
      {"no calibration", PendrelModel::Checksums, line(7, "C90 00 1234 FF 00"), 10011},
      {"read-back sum", PendrelModel::Checksums, onCommand(&Faults::BadChecksum, 'C', once(1)), 10108},
      {"epoch not taken", PendrelModel::Plain, onCommand(&Faults::Feigned, 'A'), 10012, 1, 60},
      {"mode not taken", PendrelModel::Steps, onCommand(&Faults::Feigned, 'P'), 10012, 2},
      {"subject not taken", PendrelModel::Plain, onCommand(&Faults::Feigned, 'B'), 10012},
      {"delay echo", PendrelModel::Checksums, onByte(&Faults::WrongDelayEcho, always()), 10113},
      {"start unheard", PendrelModel::Checksums, onCommand(&Faults::Unheeded, 'W'), 3001},
      {"clear unheard", PendrelModel::Steps, onCommand(&Faults::Unheeded, 'X'), 3001}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.What);
    Desk desk(each.Model);
    each.Before(desk);
    EXPECT_EQ(desk.configure(each.Mode, each.Epoch, each.Zone), each.Code);
    EXPECT_TRUE(desk.portClosed());
    EXPECT_EQ(desk.workflows.Details().SetupTouched, desk.heard().find_first_of("XB") != std::string::npos);
    // A logger whose echo was wrong waits all the same.
    EXPECT_EQ(desk.logger().waiting(), each.Code == 0 || std::string(each.What).starts_with("delay "));
    if (each.Code == 0) continue;
    EXPECT_TRUE(desk.battery == -7 && desk.serialNumber == "none" && desk.start == 0);
  }
}

/// The port is lost at one of the workflow's openings: the first, the read-back's, and the start's.
TEST(PendrelConfigure, APortThatDoesNotOpenAgainIsToldEachTime) {
  for (const std::int32_t opening : {0, 2, 4}) {
    Desk desk(PendrelModel::Plain);
    // Each opening tries the port once before.
    desk.bench.Dock->Faults.Open = {8005, {opening, simulator::Fault::Always}};
    EXPECT_EQ(desk.configure(), 10008) << opening;
    EXPECT_TRUE(desk.portClosed());
    EXPECT_EQ(desk.configure(), 10008);
    desk.bench.Dock->Faults.Open = {};
    EXPECT_EQ(desk.configure(), 0);
  }
}

}  // namespace
}  // namespace hy_wristlog
