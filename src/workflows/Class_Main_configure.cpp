#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

#include "base/dates.h"
#include "base/faults.h"
#include "errors/GlobalState.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/logging_modes.h"
#include "workflows/attempts.h"
#include "workflows/configure_times.h"
#include "workflows/subject_of.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int64_t ClockTolerance = 15;  // seconds
constexpr std::uint8_t ConfiguredThreshold = 2;
constexpr double OneSecond = 1 / SecondsPerDay;

struct ConfigureRequest {
  enmLoggerPointer LoggerType;
  enmVardenLoggingMode AcquisitionMode;
  std::int32_t EpochLength;
  const std::string& TimeZoneAbbrev;
  bool AutoDSTadjust;
  std::int32_t LocalSetTime, LocalStartTime, LocalEndTime;
  enmDateFormat DateFormat;
  enmTimeFormat TimeFormat;
};

bool sameMoment(double a, double b) { return secondsBetween(a, b) == 0; }

/// Whether the configuration read back is the one that was sent, in a logger that has forgotten its former
/// recording: a command that it misheard is answered with a prompt too.
bool sameConfiguration(const VardenRecord& wanted, const VardenRecord& found) {
  const bool same =
      found.BytesUsed == 0 && wanted.AcqThreshold == found.AcqThreshold && wanted.TZbias == found.TZbias &&
      found.SubjectInfoVersion != -1 && wanted.SubjectInfoVersion == found.SubjectInfoVersion &&
      wanted.AutoDSTadjust == found.AutoDSTadjust && wanted.EpochLength == found.EpochLength &&
      wanted.GMToffset == found.GMToffset && sameMoment(wanted.SubjectDOB, found.SubjectDOB) &&
      wanted.SubjectGender == found.SubjectGender && wanted.SubjectGUID == found.SubjectGUID &&
      wanted.SubjectIdentity == found.SubjectIdentity && wanted.SubjectInitials == found.SubjectInitials &&
      wanted.SubjectWeight == found.SubjectWeight && wanted.SubjectHeight == found.SubjectHeight &&
      sameMoment(wanted.StartTimeGMT, found.StartTimeGMT) &&
      sameMoment(wanted.EndTimeGMT, found.EndTimeGMT) && wanted.DataAvailable == found.DataAvailable &&
      wanted.TZdaylightBias == found.TZdaylightBias && sameMoment(wanted.TZdstStart, found.TZdstStart) &&
      sameMoment(wanted.TZdstEnd, found.TZdstEnd) && wanted.TZstandardBias == found.TZstandardBias &&
      wanted.TZdaylightAbbrev == found.TZdaylightAbbrev &&
      wanted.TZstandardAbbrev == found.TZstandardAbbrev && wanted.AcquisitionMode == found.AcquisitionMode;
  const bool hasDisplay = found.DeviceType == KR_QUILLANDER;
  return same &&
         (!hasDisplay || (wanted.TimeFormat == found.TimeFormat && wanted.DateFormat == found.DateFormat));
}

class ConfigureWorkflow {
 public:
  ConfigureWorkflow(MainState& state, const ConfigureRequest& request, Class_Subject& subject)
      : state_(state),
        request_(request),
        subject_(subject),
        model_(dockedModel(request.LoggerType)),
        attempts_(state, {NoCharacters, NoFinalCharacter, WrongCharacters, NoInitiation, TransmitTooSlow,
                          NoAcknowledgement, RetriesExceeded, NoEndAcknowledgement, NoPacket,
                          PortStateFailure, ClosedWhileInUse, ControlBlockFailure,
                          ReturnCode::VerificationFailed, DamagedConfig, DamagedAnswer, DockPortFailure}) {}

  std::int32_t run(float* batteryLife, std::string* serialNumber) {
    attempts_.run([&] {
      if (!prepared_) prepare();
      if (prepared_) attempt();
    });
    if (succeeded_) {
      if (batteryLife != nullptr) *batteryLife = batteryLife_;
      if (serialNumber != nullptr) *serialNumber = serialNumber_;
    }
    return attempts_.code;
  }

 private:
  VardenLogger& logger() { return state_.logger(); }
  VardenRecord& record() { return state_.logger().record; }

  /// Checks the arguments and takes the times, before any contact with a logger.
  void prepare() {
    attempts_.step([&] {
      state_.makeActiveLogger();
      const std::int32_t code = checkArguments();
      if (code != ReturnCode::Success) {
        attempts_.endWith(code);
        return;
      }
      state_.AbortFlag = false;
      prepared_ = true;
    });
  }

  std::int32_t checkArguments() {
    if (model_ == nullptr) return ReturnCode::WrongLogger;
    if (!isOffered(model_->DeviceType, request_.AcquisitionMode)) return ReturnCode::WrongMode;
    if (model_->DeviceType == KR_QUILLANDER) {
      if (request_.DateFormat != DateFormat_MMDD && request_.DateFormat != DateFormat_DDMM)
        return ReturnCode::WrongDateFormat;
      if (request_.TimeFormat < TimeFormat_DisplayOff || request_.TimeFormat > TimeFormat_24hour)
        return ReturnCode::WrongTimeFormat;
    }
    if (!isValidEpochLength(request_.EpochLength)) return ReturnCode::WrongEpoch;
    zone_ = request_.TimeZoneAbbrev.empty() ? TimeZoneTools().fncLocalTimeZoneName().Zone
                                            : TimeZoneTools().fncGetTZIfromAbbrev(request_.TimeZoneAbbrev);
    if (!zone_) return ReturnCode::UnknownZone;
    // A zone without daylight time leaves nothing to adjust, and is read back as not adjusting.
    daylight_ = request_.AutoDSTadjust && zone_->DaylightDate.wMonth > 0 && zone_->StandardDate.wMonth > 0;

    nowLocal_ = now();
    setUtc_ = Class_TimeZoneTools::fncGetGMTTime();
    if (request_.LocalSetTime != 0) setUtc_ = utcOf(request_.LocalSetTime);
    if (request_.LocalStartTime != 0 && isBefore(utcOf(request_.LocalStartTime), setUtc_))
      return ReturnCode::WrongStart;
    if (request_.LocalEndTime != 0 && isBefore(utcOf(request_.LocalEndTime), setUtc_))
      return ReturnCode::WrongEnd;
    return ReturnCode::Success;
  }

  double utcOf(std::int32_t localSeconds) const {
    const double local = VardenLogger::fncLoggerSecondsToDate(localSeconds);
    return local - Class_TimeZoneTools::fncCalcOffset(local, *zone_, daylight_) / MinutesPerDay;
  }

  /// What the logger's clock shall show at this moment.
  double loggerNow() const { return setUtc_ + (now() - nowLocal_); }

  void attempt() {
    using Self = ConfigureWorkflow;
    constexpr bool (Self::*Steps[])() = {&Self::checkModel,        &Self::stopLogger,        &Self::setClock,
                                         &Self::makeConfiguration, &Self::sendConfiguration, &Self::verify};
    if (reachLogger(attempts_, state_, *model_) && attempts_.take(*this, Steps)) finish();
  }

  bool checkModel() { return checkLogger(attempts_, state_, *model_); }

  bool stopLogger() {
    return attempts_.step([&] { logger().subSetVardenAcqStop(0); }) && !attempts_.aborted() &&
           attempts_.step([&] { logger().subSetVardenMemoryPointer(0); }) && !attempts_.aborted() &&
           (!logger().fncHasSleepMode() || attempts_.step([&] { logger().subSetVardenSleep(false); }));
  }

  bool setClock() {
    double value = 0;
    return attempts_.step([&] {
      value = (request_.LocalSetTime != 0 ? loggerNow() : Class_TimeZoneTools::fncGetGMTTime()) + OneSecond;
    }) && attempts_.step([&] { logger().subSetVardenClock(value); }) &&
           attempts_.step([&] { logger().fncReadVardenTime(); }) && attempts_.step([&] {
             if (std::abs(secondsBetween(value, logger().Get_CurrentGMTtime())) > ClockTolerance)
               throw Failure(ReturnCode::ClockFailed, "Form_CommsConfigure.subConfigureKestrin",
                             "Clock time verification failed");
           });
  }

  bool makeConfiguration() {
    return attempts_.step([&] { fitTimes(); }) && attempts_.step([&] { buildConfiguration(); });
  }

  void fitTimes() {
    TimeRequest times;
    times.EpochLength = request_.EpochLength;
    times.Zone = zone_.get();
    times.Daylight = daylight_;
    times.EarliestUtc = loggerNow();
    if (request_.LocalStartTime != 0)
      times.StartLocal = VardenLogger::fncLoggerSecondsToDate(request_.LocalStartTime);
    if (request_.LocalEndTime != 0)
      times.EndLocal = VardenLogger::fncLoggerSecondsToDate(request_.LocalEndTime);
    const std::int32_t code = fitRecordingTimes(times, times_);
    if (code != ReturnCode::Success) attempts_.endWith(code);
  }

  void buildConfiguration() {
    VardenRecord wanted = record().copy();
    wanted.AcquisitionMode = request_.AcquisitionMode;
    wanted.StartTimeGMT = cutToMinute(times_.StartUtc);
    wanted.EndTimeGMT = cutToMinute(times_.EndUtc);
    wanted.AutoDSTadjust = daylight_;
    wanted.GMToffset = times_.OffsetMinutes;
    wanted.TZstandardAbbrev = zone_->Abbreviation;
    wanted.EpochLength = fault::narrow<std::int16_t>(request_.EpochLength);
    wanted.DateFormat = request_.DateFormat;
    wanted.TimeFormat = request_.TimeFormat;
    putSubject(wanted, subject_);
    wanted.AcqThreshold = ConfiguredThreshold;
    wanted.DataAvailable = DataAvail_No;
    wanted.TZbias = zone_->Bias;
    wanted.TZstandardBias = fault::narrow<std::int16_t>(zone_->StandardBias);
    wanted.TZdaylightBias = fault::narrow<std::int16_t>(zone_->DaylightBias);
    wanted.TZdaylightAbbrev.clear();
    wanted.TZdstStart = daylight_ ? comingChange(&Class_TimeZoneTools::fncGetDaylightStart) : 0;
    wanted.TZdstEnd = daylight_ ? comingChange(&Class_TimeZoneTools::fncGetStandardStart) : 0;
    wanted.LowPowerShutdowns = 0;
    wanted.Resets = 0;
    if (wanted.Button1Map == ButtonMap_Unknown) wanted.Button1Map = ButtonMap_Marker1AndBacklight;
    if (wanted.Button2Map == ButtonMap_Unknown) wanted.Button2Map = ButtonMap_BacklightAndDateTime;
    record() = wanted;
    logger().subEncodeSubjectInfo();
    wanted_ = record();
  }

  /// The zone's change in the year of the start, or in the next year when that one has passed.
  double comingChange(double (*changeOf)(std::int32_t, const Class_TimeZoneInfo&)) const {
    const std::int32_t year = civilFromDate(times_.StartLocal).Year;
    double change = changeOf(year, *zone_);
    if (change != 0 && isBefore(change, setUtc_)) change = changeOf(year + 1, *zone_);
    return cutToMinute(change);
  }

  bool sendConfiguration() {
    return attempts_.step([&] { logger().subSendVardenConfig(); });
  }

  bool verify() {
    return attempts_.step([&] { logger().fncReadVardenConfig(false); }) &&
           attempts_.step([&] { logger().subDecodeSubjectInfo(); }) && attempts_.step([&] {
             if (sameConfiguration(wanted_, record())) return;
             logger().subSetVardenAcqStop(
                 VardenLogger::fncDateToLoggerSeconds(Class_TimeZoneTools::fncGetGMTTime()));
             logger().subSetDataAvailFlag(false);
             throw Failure(ReturnCode::VerificationFailed, "Class_Main.Configure",
                           "Kestrin setup verification failed");
           });
  }

  void finish() {
    attempts_.step([&] {
      // Reading the configuration back has put the battery's readings to zero.
      record().BatteryVoltage = wanted_.BatteryVoltage;
      record().LoadedBattVoltage = wanted_.LoadedBattVoltage;
      logger().subCloseDevicePort();
      state_.AbortFlag = false;
      attempts_.code = ReturnCode::Success;
      batteryLife_ = logger().Get_BattLifeRemaining();
      serialNumber_ = record().SerialNumber;
      succeeded_ = true;
    });
  }

  MainState& state_;
  const ConfigureRequest& request_;
  Class_Subject& subject_;
  const DockedModel* model_;
  Attempts attempts_;
  TimeZoneRef zone_;
  bool daylight_ = false;
  double nowLocal_ = 0, setUtc_ = 0;
  RecordingTimes times_;
  VardenRecord wanted_;
  bool prepared_ = false, succeeded_ = false;
  float batteryLife_ = 0;
  std::string serialNumber_;
};

}  // namespace

std::int32_t Class_Main::Configure(enmLoggerPointer LoggerType, enmVardenLoggingMode AcquisitionMode,
                                   std::int32_t EpochLength, Class_Subject& Subject,
                                   const std::string& TimeZoneAbbrev, bool AutoDSTadjust,
                                   std::int32_t LoggerLocalSetTime, std::int32_t DataCollectionLocalStartTime,
                                   std::int32_t DataCollectionLocalEndTime, enmDateFormat DateFormat,
                                   enmTimeFormat TimeFormat, float* BatteryLifeRemaining,
                                   std::string* DeviceSerialNumber) {
  const WorkMark mark(*inside_);
  if (!mark.mayBegin()) return fault::InvalidCall;
  const ConfigureRequest request{LoggerType,
                                 AcquisitionMode,
                                 EpochLength,
                                 TimeZoneAbbrev,
                                 AutoDSTadjust,
                                 LoggerLocalSetTime,
                                 DataCollectionLocalStartTime,
                                 DataCollectionLocalEndTime,
                                 DateFormat,
                                 TimeFormat};
  return ConfigureWorkflow(*inside_, request, Subject).run(BatteryLifeRemaining, DeviceSerialNumber);
}

}  // namespace hy_wristlog
