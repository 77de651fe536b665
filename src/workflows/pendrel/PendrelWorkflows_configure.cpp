#include <string>

#include "base/dates.h"
#include "base/faults.h"
#include "base/numbers.h"
#include "pendrel/Pendrel.h"
#include "pendrel/setup_answer.h"
#include "timezones/Class_TimeZoneTools.h"
#include "workflows/configure_times.h"
#include "workflows/pendrel/pendrel_run.h"
#include "workflows/subject_of.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

/// The longest wait that a logger can be told.
constexpr double LongestWaitEpochs = 32896;
constexpr std::uint8_t FirstFirmwareThatClears = 148;

struct PendrelRequest {
  enmPDLoggingMode AcquisitionMode;
  std::int32_t EpochLength;
  const std::string& TimeZoneAbbrev;
  bool AutoDSTadjust;
  std::int32_t LocalStartTime;
  bool SearchCOMport;
};

struct PendrelOutputs {
  float BatteryLife = 0;
  std::string SerialNumber;
  std::int32_t LocalStartTime = 0;
};

/// A second logger object that reads the set-up back. It goes without asking what to do with its diagnostic
/// window.
struct ReadBack : Pendrel {
  ~ReadBack() override {
    ignoringFailures([&] { subHideFormComm(); });
  }
};

bool sameSetup(const PendrelRecord& wanted, const PendrelRecord& found) {
  return wanted.SubjectInfo == found.SubjectInfo && wanted.EpochLength == found.EpochLength &&
         secondsBetween(wanted.StartDate, found.StartDate) == 0 &&
         secondsBetween(wanted.StartTime, found.StartTime) == 0 &&
         (wanted.Get_DeviceType() != KR_PENDREL_CRC_STEPS || wanted.AcquisitionMode == found.AcquisitionMode);
}

class ConfigurePendrelWorkflow {
 public:
  ConfigurePendrelWorkflow(PendrelWorkflows& workflows, MainState& state, const PendrelRequest& request,
                           Class_Subject& subject)
      : workflows_(workflows),
        state_(state),
        request_(request),
        subject_(subject),
        run_(state, "ConfigureLegacy",
             {NoCharacters, NoFinalCharacter, WrongCharacters, ReturnCode::VerificationFailed,
              PendrelChecksum, StartPassed, DelayOutOfBounds, WrongDelayEcho}) {}

  PendrelOutputs outputs;

  std::int32_t run() {
    using Self = ConfigurePendrelWorkflow;
    // The start is settled twice. Clearing the memory takes its time, so the start may have passed after it;
    // before it, a start that cannot be had is refused while the recording is still there.
    constexpr bool (Self::*Steps[])() = {&Self::settleStart, &Self::clearMemory, &Self::settleStart,
                                         &Self::fillLogger,  &Self::sendSetup,   &Self::verify,
                                         &Self::sendStart,   &Self::finish};
    return run_.run([&] {
      state_.PendrelSetupTouched = false;
      if (!checkArguments() || !reachPendrelLogger(run_, workflows_, state_, request_.SearchCOMport)) return;
      run_.take(*this, Steps);
    });
  }

 private:
  Pendrel& logger() { return state_.pendrel(); }
  PendrelRecord& record() { return logger().record; }

  bool checkArguments() {
    if (request_.AcquisitionMode != PD_Mode_ActivityOnly &&
        request_.AcquisitionMode != PD_Mode_ActivityAndSteps)
      return run_.endWith(ReturnCode::WrongMode);
    if (!isOneOf(request_.EpochLength, {15, 30, 60})) return run_.endWith(ReturnCode::WrongEpoch);
    zone_ = run_.step([&] {
      return request_.TimeZoneAbbrev.empty() ? TimeZoneTools().fncLocalTimeZoneName().Zone
                                             : TimeZoneTools().fncGetTZIfromAbbrev(request_.TimeZoneAbbrev);
    });
    // A logger keeps nothing of its zone but the abbreviation.
    if (!zone_ || zone_->Abbreviation.empty()) return run_.endWith(ReturnCode::UnknownZone);
    if (request_.LocalStartTime == 0) return true;
    const bool ahead = run_.step([&] {
      return isBefore(Class_TimeZoneTools::fncGetGMTTime(),
                      utcOf(Pendrel::fncLoggerSecondsToDate(request_.LocalStartTime)));
    });
    return ahead || run_.endWith(ReturnCode::WrongStart);
  }

  double utcOf(double local) const {
    return addTime(
        local, -Class_TimeZoneTools::fncCalcOffset(local, *zone_, request_.AutoDSTadjust) / MinutesPerDay);
  }

  bool clearMemory() {
    const enmDeviceType type = record().Get_DeviceType();
    const bool clears = type == KR_PENDREL_CRC_STEPS ||
                        (type == KR_PENDREL && record().FirmwareVersion >= FirstFirmwareThatClears);
    if (!state_.LegacyClearMemoryOnConfigure || !clears) return true;
    state_.PendrelSetupTouched = true;
    return run_.step([&] { logger().subClearMemory(0); });
  }

  /// Starts are whole minutes, which every epoch length divides.
  bool settleStart() {
    const bool within = run_.step([&] {
      const double now = Class_TimeZoneTools::fncGetGMTTime();
      const double earliest = nextMinute(now);
      const double latest =
          cutToMinute(addTime(now, LongestWaitEpochs * request_.EpochLength / SecondsPerDay));
      if (request_.LocalStartTime == 0) {
        startUtc_ = earliest;
        startLocal_ = Class_TimeZoneTools::fncUTCToLocalDate(startUtc_, *zone_, request_.AutoDSTadjust);
      } else {
        startLocal_ = cutToMinute(Pendrel::fncLoggerSecondsToDate(request_.LocalStartTime));
        startUtc_ = utcOf(startLocal_);
      }
      return !isBefore(startUtc_, earliest) && !isBefore(latest, startUtc_);
    });
    if (!within) return run_.endWith(ReturnCode::WrongStart);
    // The logger's two digits would be read back as a year of another century.
    return run_.step([&] { return hasTwoDigitYear(startLocal_); }) || run_.endWith(ReturnCode::WrongDate);
  }

  bool fillLogger() {
    return run_.step([&] {
      record().EpochLength = fault::narrow<std::int16_t>(request_.EpochLength);
      record().StartDate = datePart(startLocal_);
      record().StartTime = startLocal_ - record().StartDate;
      record().AutoDSTadjust = request_.AutoDSTadjust;
      record().GMToffset = fault::narrow<std::int16_t>(minutesBetween(startUtc_, startLocal_));
      record().TimeZoneAbbrev = zone_->Abbreviation;
      putSubject(record(), subject_);
      record().AcquisitionMode = request_.AcquisitionMode;
    });
  }

  bool sendSetup() {
    state_.PendrelSetupTouched = true;
    run_.step([&] { logger().subSendSetup(false); });
    return run_.step([&] { logger().subCloseCOMport(); });
  }

  bool verify() {
    ReadBack readBack;
    if (!run_.open(readBack, state_.LegacyCOMport)) return false;
    run_.step([&] { readBack.fncReadSetup(); });
    run_.step([&] { readBack.subDecodeSubjectInfo(); });
    run_.step([&] {
      if (!sameSetup(record(), readBack.record))
        throw Failure(ReturnCode::VerificationFailed, "Class_Main.ConfigureLegacy",
                      "Pendrel setup verification failed");
    });
    return run_.step([&] { readBack.subCloseCOMport(); });
  }

  bool sendStart() {
    if (!run_.open(logger(), state_.LegacyCOMport)) return false;
    run_.step([&] { logger().subResetDevice(); });
    run_.step([&] { logger().fncSendDelayedStart(startUtc_); });
    return run_.step([&] { logger().subCloseCOMport(); });
  }

  bool finish() {
    return run_.step([&] {
      outputs.BatteryLife = logger().Get_BattLifeRemaining();
      outputs.SerialNumber = record().SerialNumber;
      outputs.LocalStartTime = Pendrel::fncDateToLoggerSeconds(record().StartDate + record().StartTime);
      run_.code = ReturnCode::Success;
    });
  }

  PendrelWorkflows& workflows_;
  MainState& state_;
  const PendrelRequest& request_;
  Class_Subject& subject_;
  PendrelRun run_;
  TimeZoneRef zone_;
  double startUtc_ = 0, startLocal_ = 0;
};

}  // namespace

std::int32_t PendrelWorkflows::ConfigureLegacy(enmPDLoggingMode AcquisitionMode, std::int32_t EpochLength,
                                               Class_Subject& Subject, const std::string& TimeZoneAbbrev,
                                               bool AutoDSTadjust, std::int32_t& DataCollectionLocalStartTime,
                                               bool SearchCOMport, float& BatteryLifeRemaining,
                                               std::string& DeviceSerialNumber) {
  const PendrelRequest request{
      AcquisitionMode, EpochLength, TimeZoneAbbrev, AutoDSTadjust, DataCollectionLocalStartTime,
      SearchCOMport};
  ConfigurePendrelWorkflow workflow(*this, state_, request, Subject);
  const std::int32_t code = workflow.run();
  if (code != ReturnCode::Success) return code;
  BatteryLifeRemaining = workflow.outputs.BatteryLife;
  DeviceSerialNumber = workflow.outputs.SerialNumber;
  DataCollectionLocalStartTime = workflow.outputs.LocalStartTime;
  return code;
}

}  // namespace hy_wristlog
