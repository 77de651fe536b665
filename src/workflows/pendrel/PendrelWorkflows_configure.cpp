#include <string>

#include "base/dates.h"
#include "base/faults.h"
#include "base/numbers.h"
#include "pendrel/Pendrel.h"
#include "pendrel/setup_answer.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "workflows/configure_times.h"
#include "workflows/pendrel/pendrel_run.h"

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

/// A logger that is read once more and goes without asking what to do with its diagnostic window.
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
    using Step = bool (ConfigurePendrelWorkflow::*)();
    // The start is settled again behind the clearing, which takes its time; a start that cannot be had is
    // refused while the recording is still there.
    constexpr Step Steps[] = {&ConfigurePendrelWorkflow::settleStart, &ConfigurePendrelWorkflow::clearMemory,
                              &ConfigurePendrelWorkflow::settleStart, &ConfigurePendrelWorkflow::fillLogger,
                              &ConfigurePendrelWorkflow::sendSetup,   &ConfigurePendrelWorkflow::verify,
                              &ConfigurePendrelWorkflow::sendStart};
    return run_.run([&] {
      state_.PendrelSetupTouched = false;
      if (!checkArguments() || !reachPendrelLogger(run_, workflows_, state_, request_.SearchCOMport)) return;
      for (const Step step : Steps)
        if (!(this->*step)() || run_.aborted()) return;
      finish();
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
    // A logger keeps its zone by the abbreviation.
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
    run_.step([&] { logger().subClearMemory(0); });
    return true;
  }

  /// All epochs divide a minute, so that a start stands on a full one.
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
    // Another year would be read back as one of another century, now and whenever the recording is retrieved.
    return run_.step([&] { return hasTwoDigitYear(startLocal_); }) || run_.endWith(ReturnCode::WrongDate);
  }

  bool fillLogger() {
    run_.step([&] {
      record().EpochLength = fault::narrow<std::int16_t>(request_.EpochLength);
      record().StartDate = datePart(startLocal_);
      record().StartTime = startLocal_ - record().StartDate;
      record().AutoDSTadjust = request_.AutoDSTadjust;
      record().GMToffset = fault::narrow<std::int16_t>(minutesBetween(startUtc_, startLocal_));
      record().TimeZoneAbbrev = zone_->Abbreviation;
      if (subject_.Get_Identity().empty()) subject_.Let_Identity(record().SerialNumber);
      if (subject_.Get_GUID().empty()) subject_.Let_GUID(Tools().fncCreateGUID());
      record().SubjectDOB = subject_.Get_DOB();
      record().SubjectGender = subject_.Get_Gender();
      record().SubjectGUID = subject_.Get_GUID();
      record().SubjectHeight = subject_.Get_Height();
      record().SubjectIdentity = subject_.Get_Identity();
      record().SubjectInitials = subject_.Get_Initials();
      record().SubjectWeight = subject_.Get_Weight();
      record().AcquisitionMode = request_.AcquisitionMode;
    });
    return true;
  }

  bool sendSetup() {
    state_.PendrelSetupTouched = true;
    run_.step([&] { logger().subSendSetup(false); });
    run_.step([&] { logger().subCloseCOMport(); });
    return true;
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
    run_.step([&] { readBack.subCloseCOMport(); });
    return true;
  }

  bool sendStart() {
    if (!run_.open(logger(), state_.LegacyCOMport)) return false;
    run_.step([&] { logger().subResetDevice(); });
    run_.step([&] { logger().fncSendDelayedStart(startUtc_); });
    run_.step([&] { logger().subCloseCOMport(); });
    return true;
  }

  void finish() {
    run_.step([&] {
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
