#include <chrono>
#include <cmath>

#include "base/dates.h"
#include "errors/GlobalState.h"
#include "pendrel_session/session.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog::pendrel_session {
namespace {

using simulator::PendrelModel;

/// The values of a set-up that starts `seconds` from now.
void prepare(Pendrel& logger, std::int16_t epoch, double seconds) {
  const double start = Class_TimeZoneTools::fncGetGMTTime() + seconds / SecondsPerDay;
  logger.record.SubjectIdentity = "Subject 17";
  logger.record.EpochLength = epoch;
  logger.record.StartDate = std::floor(start);
  logger.record.StartTime = start - std::floor(start);
}

TEST(Simulated, SetupStopsWhereItFails) {
  const std::string source = " Class_Pendrel.subSendSetup: ",
                    epoch = "10104" + source + "Invalid logger epoch length",
                    mode = "10114" + source + "Invalid Acquisition Mode",
                    lost = "3001 Form_Comm.subSendChars: No Characters Received";
  const auto Crc = PendrelModel::Checksums, Steps = PendrelModel::Steps;
  /// Epoch, mode, the character that is not echoed (-1: none); result, progress, commands heard.
  using Case =
      std::tuple<PendrelModel, std::int16_t, int, std::int32_t, std::string, std::int32_t, std::size_t>;
  const Case cases[] = {{Crc, 0, 1, -1, epoch, 77, 0},   {Crc, 901, 1, -1, epoch, 77, 0},
                        {Crc, 14, 1, -1, epoch, 25, 1},  {Crc, 15, 0, -1, "", 100, 4},
                        {Crc, 60, 1, 67, lost, 0, 1},    {Crc, 60, 1, 68, lost, 25, 1},
                        {Crc, 60, 1, 74, lost, 50, 2},   {Crc, 60, 1, 84, lost, 75, 3},
                        {Steps, 60, 1, 92, lost, 75, 4}, {Steps, 60, 3, -1, mode, 75, 4}};
  for (const auto& [model, length, acquisition, deafAt, result, progress, commands] : cases) {
    Session session{model};
    become(session.logger, static_cast<int>(model));
    prepare(session.logger, length, 3600);
    session.logger.record.ProgressPercent = 77;
    session.logger.record.AcquisitionMode = static_cast<enmPDLoggingMode>(acquisition);
    if (deafAt >= 0) session.bench.Logger->Faults.LoseEcho = simulator::once(deafAt);
    EXPECT_EQ(outcome([&] { session.logger.subSendSetup(false); }), result);
    EXPECT_EQ(session.logger.record.ProgressPercent, progress) << length << ' ' << deafAt;
    EXPECT_EQ(session.bench.Logger->commands().size(), commands) << length << ' ' << deafAt;
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
  Session session{PendrelModel::Plain};
  become(session.logger, KR_PENDREL);
  session.bench.Logger->parts().EpochCode = 4;
  session.bench.Logger->Faults.DelayEcho = simulator::always();
  const double start = Class_TimeZoneTools::fncGetGMTTime() + 600 / SecondsPerDay;
  EXPECT_EQ(
      outcome([&] { session.logger.fncSendDelayedStart(start); }),
      "10112 Class_Pendrel.fncSendDelayedStart: Too much time elapsed, time to release port has passed.");
}

}  // namespace
}  // namespace hy_wristlog::pendrel_session
