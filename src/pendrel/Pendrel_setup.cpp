#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/dates.h"
#include "base/formats.h"
#include "pendrel/Pendrel.h"
#include "pendrel/delayed_start.h"
#include "pendrel/starred.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int16_t SecondsOfEpochCode = 15;
constexpr std::int16_t LongestEpoch = 900;
constexpr std::size_t SubjectSize = 64;

constexpr const char* DayMonthYear = "ddmmyy";
constexpr const char* HourMinute = "HHmm";

void checkEpoch(StarredProcedure& command, std::int16_t epochLength, std::int16_t shortest) {
  if (epochLength < shortest || epochLength > LongestEpoch)
    command.raise(PendrelEpochLength, "Invalid logger epoch length");
}

/// The PC's local clock with its milliseconds; without them the start would be up to a second late.
double preciseNow() {
  constexpr double MillisecondsPerDay = SecondsPerDay * 1000;
  const CivilTime time = platform::current().clock().local();
  return dateFromCivil(time) + time.Millisecond / MillisecondsPerDay;
}

}  // namespace

/// An epoch below 15 seconds is refused only after the subject text has been sent, which the logger then
/// keeps. Times are rounded to the second, and their seconds left out.
void Pendrel::subSendSetup(bool keepSubject) {
  StarredProcedure command{link(), "subSendSetup"};
  const auto format = [&](double date, const char* pattern) {
    return command.procedure.statement([&] { return formatDate(date, pattern); });
  };
  command.procedure.run([&] {
    checkEpoch(command, record.EpochLength, 1);
    record.ProgressPercent = 0;
    if (!keepSubject) {
      command.procedure.statement([&] { subEncodeSubjectInfo(); });
      if (record.SubjectInfo.empty()) command.raise(PendrelSetup, "Invalid logger setup");
    }
    command.send(starred::Subject, record.SubjectInfo, record.SubjectInfo.size() < SubjectSize);
    record.ProgressPercent = 25;

    checkEpoch(command, record.EpochLength, SecondsOfEpochCode);
    const auto code = static_cast<std::uint8_t>(record.EpochLength / SecondsOfEpochCode);
    command.send(starred::Epoch, Tools().fncConvertByteToHexString(code));
    record.ProgressPercent = 50;
    command.send(starred::StartDate, format(record.StartDate, DayMonthYear));
    record.ProgressPercent = 75;
    command.send(starred::StartTime, format(record.StartTime, HourMinute));

    if (record.Get_DeviceType() == KR_PENDREL_CRC_STEPS) {
      const bool activityOnly = record.AcquisitionMode == PD_Mode_ActivityOnly;
      if (!activityOnly && record.AcquisitionMode != PD_Mode_ActivityAndSteps)
        command.raise(PendrelMode, "Invalid Acquisition Mode");
      const std::uint8_t mode = activityOnly ? starred::ActivityMode : starred::StepsMode;
      command.procedure.statement([&] { subSetMemorylocation(starred::ModeLocation, mode); });
    }
    record.ProgressPercent = 100;
  });
}

std::int32_t Pendrel::fncSendDelayedStart(double startUtc) {
  StarredProcedure command{link(), "fncSendDelayedStart"};
  return command.procedure.run([&] {
    const double entry = preciseNow();
    const double start = startUtc + Class_TimeZoneTools::fncGetGMTOffset() / MinutesPerDay;
    const DelayedStart plan = planDelayedStart(start, entry, record.EpochLength);

    if (record.Get_CTcompliant()) {
      const std::string words = plan.epochWord() + plan.secondsWord();
      constexpr std::size_t ChecksumDigits = 4;
      const std::string echo = command.ask(starred::Delay, words).back();
      if (echo.size() != words.size() + ChecksumDigits || !echo.starts_with(words))
        command.raise(WrongDelayEcho, "Wrong echo received from delayed start command");
      const std::string_view checksum = std::string_view(echo).substr(std::min(echo.size(), words.size()));
      if (!starred::standsFor(checksum, starred::checksumOf(words)))
        command.raise(PendrelChecksum, starred::WrongChecksum);
    } else {
      command.ask(starred::DelayEpochs, plan.epochWord());
      command.ask(starred::DelaySeconds, plan.secondsWord());
    }
    return millisecondsToRelease(plan.ReleaseTime, preciseNow());
  });
}

void Pendrel::subSendBatteryDate(double date) {
  StarredProcedure command{link(), "subSendBatteryDate"};
  command.procedure.run([&] {
    const std::string digits = command.procedure.statement([&] { return formatDate(date, DayMonthYear); });
    command.ask(starred::BatteryDate, digits);
  });
}

}  // namespace hy_wristlog
