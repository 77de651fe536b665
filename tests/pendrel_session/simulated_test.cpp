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

/// The values of a set-up that starts `seconds` from now, cut to its minute.
void prepare(Pendrel& logger, std::int16_t epoch, double seconds) {
  PendrelRecord& record = logger.record;
  record.SubjectIdentity = "Subject 17";
  record.EpochLength = epoch;
  record.AcquisitionMode =
      record.Get_DeviceType() == KR_PENDREL_CRC_STEPS ? PD_Mode_ActivityAndSteps : PD_Mode_ActivityOnly;
  const double start =
      std::floor((Class_TimeZoneTools::fncGetGMTTime() + seconds / SecondsPerDay) * MinutesPerDay) /
      MinutesPerDay;
  const double local = start + Class_TimeZoneTools::fncGetGMTOffset() / MinutesPerDay;
  record.StartDate = std::floor(local);
  record.StartTime = local - std::floor(local);
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
      {Crc, 0, 1, -1, epoch, 77, 0},   {Crc, 901, 1, -1, epoch, 77, 0}, {Crc, 1, 1, -1, epoch, 25, 1},
      {Crc, 14, 1, -1, epoch, 25, 1},  {Crc, 15, 0, -1, "", 100, 4},    {Crc, 60, 1, 67, lost, 0, 1},
      {Crc, 60, 1, 68, lost, 25, 1},   {Crc, 60, 1, 74, lost, 50, 2},   {Crc, 60, 1, 84, lost, 75, 3},
      {Steps, 60, 1, 92, lost, 75, 4}, {Steps, 60, 3, -1, mode, 75, 4}, {Steps, 60, 1, -1, "", 100, 5}};
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
  const std::tuple<std::size_t, std::int16_t, double, double, std::string> cases[] = {
      {0, 15, dateSerial(2026, 3, 2), 9.0 / 24, "\r***A01***D020326***E0900"},
      {63, 44, dateSerial(1999, 12, 31), 86399.4 / SecondsPerDay, "\r***A02***D311299***E2359"},
      {64, 900, dateSerial(2000, 1, 1) + 0.4, 46799.7 / SecondsPerDay, "***A3C***D010100***E1300"},
      {65, 60, UnknownDate, UnknownDate, "***A04***D291299***E0000"}};
  for (const auto& [size, epoch, date, time, wire] : cases) {
    ScriptedSession session;
    PendrelRecord& record = session.logger.record;
    std::tie(record.EpochLength, record.StartDate, record.StartTime) = std::tie(epoch, date, time);
    record.SubjectInfo = std::string(size, 's');
    session.logger.subSendSetup(true);
    EXPECT_EQ(session.world->Written, "***B" + record.SubjectInfo + wire);
  }
}

TEST(Simulated, ADelayThatTakesTooLongToSendFails) {
  for (const auto model : {PendrelModel::Plain, PendrelModel::Checksums}) {
    Session session{model};
    become(session.logger, static_cast<int>(model));
    session.bench.Logger->parts().EpochCode = 4;
    session.bench.Logger->Faults.DelayEcho = simulator::always();
    const double start = Class_TimeZoneTools::fncGetGMTTime() + 600 / SecondsPerDay;
    EXPECT_EQ(
        outcome([&] { session.logger.fncSendDelayedStart(start); }),
        "10112 Class_Pendrel.fncSendDelayedStart: Too much time elapsed, time to release port has passed.");
  }
}

}  // namespace
}  // namespace hy_wristlog::pendrel_session
