#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "base/dates.h"
#include "errors/GlobalState.h"
#include "pendrel_session/session.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog::pendrel_session {
namespace {

using simulator::PendrelModel;
using Texts = std::vector<std::string>;

/// The values of a set-up that starts `seconds` from now, cut to its minute; returns the start in UTC.
double prepare(Pendrel& logger, std::int16_t epoch, double seconds) {
  PendrelRecord& record = logger.record;
  record.SubjectIdentity = "Subject 17";
  record.SubjectInitials = "AB";
  record.SubjectGender = "F";
  record.SubjectGUID = "0123456789ABCDEF0123456789ABCDEF";
  record.SubjectDOB = 30808;
  record.SubjectHeight = 168.5F;
  record.SubjectWeight = 72.3F;
  record.TimeZoneAbbrev = "EST";
  record.AutoDSTadjust = true;
  record.GMToffset = Class_TimeZoneTools::fncGetGMTOffset();
  record.EpochLength = epoch;
  record.AcquisitionMode =
      record.Get_DeviceType() == KR_PENDREL_CRC_STEPS ? PD_Mode_ActivityAndSteps : PD_Mode_ActivityOnly;
  const double start =
      std::floor((Class_TimeZoneTools::fncGetGMTTime() + seconds / SecondsPerDay) * MinutesPerDay) /
      MinutesPerDay;
  const double local = start + record.GMToffset / MinutesPerDay;
  record.StartDate = std::floor(local);
  record.StartTime = local - std::floor(local);
  return start;
}

TEST(Simulated, SetUpRecordReadOut) {
  for (const auto model : {PendrelModel::Plain, PendrelModel::Checksums, PendrelModel::Steps}) {
    SCOPED_TRACE(static_cast<int>(model));
    Session session{model};
    Pendrel& logger = session.logger;
    simulator::SimulatedPendrel& device = *session.bench.Logger;
    const bool steps = model == PendrelModel::Steps, plain = model == PendrelModel::Plain;

    EXPECT_TRUE(logger.fncGetPrompt());
    logger.fncReadSetup();
    EXPECT_EQ(static_cast<int>(logger.record.Get_DeviceType()), static_cast<int>(model));
    logger.subSendBatteryDate(dateSerial(2026, 2, 28));
    logger.subClearMemory(0);
    const double start = prepare(logger, 30, 600);
    device.forgetCommands();
    logger.subSendSetup(false);
    EXPECT_EQ(logger.record.ProgressPercent, 100);
    Texts sent = {"***B" + logger.record.SubjectInfo, "***A02", "***D" + device.parts().Texts.StartDate,
                  "***E" + device.parts().Texts.StartTime};
    if (steps) sent.emplace_back("***P006D47");
    EXPECT_EQ(device.commands(), sent);

    Pendrel again;
    logger.subCloseCOMport();
    EXPECT_EQ(again.fncOpenCOMport(1, false), 0);
    again.fncReadSetup();
    EXPECT_EQ(again.record.SubjectIdentity, "Subject 17");
    EXPECT_EQ(again.record.SubjectInfo, logger.record.SubjectInfo);
    EXPECT_EQ(again.record.SubjectHeight, 168.5F);
    EXPECT_EQ(again.record.EpochLength, 30);
    EXPECT_EQ(again.record.StartDate, logger.record.StartDate);
    EXPECT_NEAR(again.record.StartTime, logger.record.StartTime, 1e-9);
    EXPECT_EQ(again.record.BatteryDate, dateSerial(2026, 2, 28));
    EXPECT_EQ(again.record.AcquisitionMode, logger.record.AcquisitionMode);
    EXPECT_EQ(again.record.BytesUsed, 0);

    again.subResetDevice();
    const double before = session.bench.World->elapsed();
    const std::int32_t release = again.fncSendDelayedStart(start);
    EXPECT_NEAR(release / 1000.0 + session.bench.World->elapsed() - before, 10, 0.501);
    session.bench.World->advance(std::chrono::milliseconds{release});
    again.subCloseCOMport();
    const auto untilStart = [&](double seconds) {
      const double now = static_cast<double>(session.bench.World->now());
      const double left = (start - UnixEpochDate) * SecondsPerDay + seconds - now;
      session.bench.World->advance(std::chrono::milliseconds{std::llround(left * 1000)});
    };
    untilStart(-2);
    EXPECT_TRUE(device.waiting());
    untilStart(2);
    EXPECT_TRUE(device.recording());

    device.wear(std::chrono::hours{20});
    ASSERT_EQ(logger.fncOpenCOMport(1, true), 0);
    logger.fncReadSetup();
    PendrelRecord& record = logger.record;
    EXPECT_NEAR(record.BytesUsed, 20 * 120 * (steps ? 2 : 1), 100);
    logger.subInitRawData();
    const std::int16_t blocks = record.Get_BlocksToDownload();
    EXPECT_EQ(blocks, steps ? 2 : 1);
    for (std::int16_t block = 0; block < blocks; ++block) {
      const double before = session.bench.World->elapsed();
      const std::size_t size = logger.fncReadMemoryBlock(block).size();
      EXPECT_EQ(size, plain ? 4096U : 4098U);
      // Six typed characters, a second's pause, 10 bits a byte at 4800 baud, and the rests behind it.
      EXPECT_NEAR(session.bench.World->elapsed() - before,
                  0.9 + 0.1 + 1 + static_cast<double>(size) / 480 + 2.5, 0.25);
    }
    for (std::size_t at = 0; at < static_cast<std::size_t>(record.BytesUsed) + 128; ++at)
      ASSERT_EQ(record.RawData.at(at), device.memory().read(at)) << at;
    logger.subSetMemorylocation(0xFF, 7);
    EXPECT_EQ(logger.fncReadMemoryLocation(0xFF), 7);
  }
}

TEST(Simulated, SetupStopsWhereItFails) {
  struct Case {
    PendrelModel Model;
    std::int16_t Epoch;
    int Mode;
    std::int32_t DeafAt;  ///< the character that is not echoed; -1 none
    std::string Result;
    std::int32_t Progress;
    std::size_t Commands;
  };
  const std::string source = " Class_Pendrel.subSendSetup: ",
                    epoch = "10104" + source + "Invalid logger epoch length",
                    mode = "10114" + source + "Invalid Acquisition Mode",
                    lost = "3001 Form_Comm.subSendChars: No Characters Received";
  const auto Crc = PendrelModel::Checksums, Steps = PendrelModel::Steps;
  const Case cases[] = {
      {Crc, 0, 1, -1, epoch, 77, 0},   {Crc, -1, 1, -1, epoch, 77, 0},  {Crc, 901, 1, -1, epoch, 77, 0},
      {Crc, 1, 1, -1, epoch, 25, 1},   {Crc, 14, 1, -1, epoch, 25, 1},  {Crc, 15, 0, -1, "", 100, 4},
      {Crc, 900, 3, -1, "", 100, 4},   {Crc, 60, 1, 67, lost, 0, 1},    {Crc, 60, 1, 68, lost, 25, 1},
      {Crc, 60, 1, 74, lost, 50, 2},   {Crc, 60, 1, 84, lost, 75, 3},   {Steps, 60, 1, 92, lost, 75, 4},
      {Steps, 60, 0, -1, mode, 75, 4}, {Steps, 60, 3, -1, mode, 75, 4}, {Steps, 60, 1, -1, "", 100, 5}};
  for (const Case& c : cases) {
    Session session{c.Model};
    become(session.logger, static_cast<int>(c.Model));
    prepare(session.logger, c.Epoch, 3600);
    session.logger.record.ProgressPercent = 77;
    session.logger.record.AcquisitionMode = static_cast<enmPDLoggingMode>(c.Mode);
    if (c.DeafAt >= 0) session.bench.Logger->Faults.LoseEcho = simulator::once(c.DeafAt);
    EXPECT_EQ(outcome([&] { session.logger.subSendSetup(false); }), c.Result);
    EXPECT_EQ(session.logger.record.ProgressPercent, c.Progress) << c.Epoch << ' ' << c.DeafAt;
    EXPECT_EQ(session.bench.Logger->commands().size(), c.Commands) << c.Epoch << ' ' << c.DeafAt;
  }
}

TEST(Simulated, SetupNeedsASubject) {
  ScriptedSession session;
  Class_ErrorAction leave;
  leave.ErrorNumber = 6;
  leave.ErrorModule = "Class_Pendrel";
  leave.ErrorProcedure = "subEncodeSubjectInfo";
  leave.ErrorAction = errExit;
  globals().ErrorActions = {leave};
  session.logger.record.SubjectDOB = 1e30;
  EXPECT_EQ(outcome([&] { session.logger.subSendSetup(false); }),
            "10105 Class_Pendrel.subSendSetup: Invalid logger setup");
  EXPECT_EQ(session.world->Written, "");
}

TEST(Simulated, SetupOnTheWire) {
  const std::tuple<std::int16_t, double, double, std::string> cases[] = {
      {15, dateSerial(2026, 3, 2), 9.0 / 24, "***A01***D020326***E0900"},
      {44, dateSerial(1999, 12, 31), 86399.4 / SecondsPerDay, "***A02***D311299***E2359"},
      {900, dateSerial(2000, 1, 1) + 0.4, 46799.7 / SecondsPerDay, "***A3C***D010100***E1300"},
      {60, UnknownDate, UnknownDate, "***A04***D291299***E0000"}};
  for (const auto& [epoch, date, time, wire] : cases) {
    for (const std::size_t size : {0U, 63U, 64U, 65U}) {
      ScriptedSession session;
      PendrelRecord& record = session.logger.record;
      record.EpochLength = epoch;
      record.StartDate = date;
      record.StartTime = time;
      record.SubjectInfo = std::string(size, 's');
      session.logger.subSendSetup(true);
      EXPECT_EQ(session.world->Written, "***B" + record.SubjectInfo + (size < 64 ? "\r" : "") + wire);
    }
  }
}

TEST(Simulated, DelayedStartInTime) {
  struct Case {
    PendrelModel Model;
    double Seconds;
    std::function<void(simulator::PendrelFaults&)> Spoil;
    std::int32_t Number;
    std::size_t Commands;
  };
  const auto Plain = PendrelModel::Plain, Crc = PendrelModel::Checksums;
  const Case cases[] = {
      {Crc, -1, [](auto&) {}, 10111, 0},
      {Crc, 9, [](auto&) {}, 10112, 0},
      {Crc, 40, [](auto&) {}, 0, 1},
      {Plain, 40, [](auto&) {}, 0, 2},
      {Crc, 32896.0 * 60 + 11, [](auto&) {}, 10112, 0},
      {Crc, 600, [](auto& f) { f.DelayEcho = simulator::always(); }, 10112, 1},
      {Plain, 600, [](auto& f) { f.DelayEcho.Times = 7; }, 10112, 2},
      {Plain, 600, [](auto& f) { f.Unheeded['F'] = simulator::once(); }, 3001, 2},
  };
  for (const Case& c : cases) {
    Session session{c.Model};
    become(session.logger, static_cast<int>(c.Model));
    session.bench.Logger->parts().EpochCode = 4;
    c.Spoil(session.bench.Logger->Faults);
    const double start = Class_TimeZoneTools::fncGetGMTTime() + c.Seconds / SecondsPerDay;
    const Failure failure = caught([&] { EXPECT_GT(session.logger.fncSendDelayedStart(start), 0); });
    EXPECT_EQ(failure.Number, c.Number) << c.Seconds << failure.Description;
    EXPECT_EQ(session.bench.Logger->commands().size(), c.Commands) << c.Number;
  }
}

}  // namespace
}  // namespace hy_wristlog::pendrel_session
