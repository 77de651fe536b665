#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "base/dates.h"
#include "base/faults.h"
#include "base/numbers.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/battery.h"
#include "varden/logging_modes.h"
#include "workflows/attempts.h"
#include "workflows/configure_times.h"
#include "workflows/subject_of.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int16_t LowVividPercent = 10;

bool hasUsableSubject(const VardenRecord& record) {
  return record.SubjectInfoVersion != -1 && !record.SubjectIdentity.empty() &&
         !record.SubjectGender.empty() && !record.SubjectGUID.empty() && record.SubjectDOB != UnknownDate &&
         record.SubjectWeight != -1 && record.SubjectHeight != -1;
}

class RetrieveWorkflow {
 public:
  RetrieveWorkflow(MainState& state, enmLoggerPointer loggerType, std::shared_ptr<Class_Subject>& subject,
                   bool ignoreWarnings)
      : state_(state),
        model_(dockedModel(loggerType)),
        subject_(subject),
        ignoreWarnings_(ignoreWarnings),
        attempts_(
            state,
            {NoCharacters, NoFinalCharacter, WrongCharacters, RetriesExceeded, NoPacket, PortStateFailure,
             ClosedWhileInUse, ControlBlockFailure, DamagedConfig, DamagedAnswer, DockPortFailure},
            ReturnCode::Aborted) {}

  bool lowBattery = false;
  std::optional<enmDecodeResult> decodeResult;

  std::int32_t run() {
    return attempts_.run([&] {
      if (!prepared_) prepare();
      if (prepared_) attempt();
    });
  }

 private:
  VardenLogger& logger() { return state_.logger(); }
  VardenRecord& record() { return state_.logger().record; }

  void prepare() {
    attempts_.step([&] {
      state_.makeActiveLogger();
      if (model_ == nullptr) {
        attempts_.endWith(ReturnCode::WrongLogger);
        return;
      }
      state_.AbortFlag = false;
      prepared_ = true;
    });
  }

  void attempt() {
    using Self = RetrieveWorkflow;
    constexpr bool (Self::*Steps[])() = {
        &Self::checkModel, &Self::checkBattery,  &Self::checkEpoch, &Self::takeSubject, &Self::checkZone,
        &Self::checkState, &Self::stopLogger,    &Self::settleZone, &Self::readData,    &Self::decode,
        &Self::writeStop,  &Self::clearDataFlag, &Self::finish};
    if (reachLogger(attempts_, state_, *model_)) attempts_.take(*this, Steps);
  }

  /// Ends the workflow, and answers false, unless warnings are ignored.
  bool warn(std::int32_t code) {
    if (!ignoreWarnings_) return attempts_.endWith(code);
    attempts_.code = code;
    return true;
  }

  bool checkModel() {
    logger().noteStep(RetrieveStep_Reached);
    if (!checkLogger(attempts_, state_, *model_)) return false;
    return isOffered(model_->DeviceType, record().AcquisitionMode) ||
           attempts_.endWith(ReturnCode::WrongMode);
  }

  bool checkBattery() {
    return attempts_.step([&] {
      if (model_->DeviceType == KR_QUILLANDER ? logger().Get_BatteryPercent() < LowVividPercent
                                              : record().BatteryVoltage < ChargedTolkaVoltage)
        lowBattery = true;
    });
  }

  bool checkEpoch() {
    return isValidEpochLength(record().EpochLength) || attempts_.endWith(ReturnCode::WrongEpoch);
  }

  bool takeSubject() {
    if (!hasUsableSubject(record()) && !warn(ReturnCode::SubjectUnusable)) return false;
    return attempts_.step([&] {
      if (!subject_) fault::raise(fault::ObjectNotSet);
      *subject_ = subjectOf(record());
    });
  }

  bool checkZone() {
    return (!record().TZstandardAbbrev.empty() && record().GMToffset != -1) ||
           attempts_.endWith(ReturnCode::UnknownZone);
  }

  bool checkState() {
    if (record().DataAvailable == DataAvail_No &&
        isBefore(logger().Get_CurrentGMTtime(), record().StartTimeGMT) && !warn(ReturnCode::StillWaiting))
      return false;
    return record().Resets == 0 || warn(ReturnCode::LoggerReset);
  }

  bool stopLogger() {
    logger().noteStep(RetrieveStep_Stopping);
    if (!attempts_.step([&] { logger().subSetVardenAcqStop(0); })) return false;
    logger().noteStep(RetrieveStep_Stopped);
    if (!attempts_.step([&] { logger().fncReadVardenSetup(); })) return false;
    if (record().BytesUsed < 1) return attempts_.endWith(ReturnCode::NoData);
    configuredEnd_ = record().EndTimeGMT;
    return true;
  }

  /// The zone of the logger must be the one that has its abbreviation here. Otherwise the record is filled
  /// from the zone that is taken for it.
  bool settleZone() {
    return attempts_.step([&] {
      TimeZoneRef looked = TimeZoneTools().fncGetTZIfromAbbrev(record().TZstandardAbbrev);
      bool settled = false;
      if (!record().TimeZone) {
        if (!warn(ReturnCode::ZoneDiffers)) return;
        record().TimeZone = TimeZoneTools().fncLocalTimeZoneName().Zone;
        if (!record().TimeZone && !platform::current().zones().trouble().empty()) {
          attempts_.endWith(ReturnCode::UnknownZone);
          return;
        }
        if (!record().TimeZone) fault::raise(fault::ObjectNotSet);
      } else {
        settled = looked && looked->DisplayName == record().TimeZone->DisplayName;
        if (!settled && !warn(ReturnCode::ZoneDiffers)) return;
      }
      if (settled) return;
      const Class_TimeZoneInfo& zone = *record().TimeZone;
      record().TZbias = zone.Bias;
      record().TZstandardBias = fault::narrow<std::int16_t>(zone.StandardBias);
      record().TZdaylightBias = fault::narrow<std::int16_t>(zone.DaylightBias);
      record().TZstandardAbbrev = zone.Abbreviation;
    });
  }

  bool readData() {
    logger().noteStep(RetrieveStep_Downloading);
    return attempts_.step([&] { logger().fncReadVardenData(); }) &&
           attempts_.step([&] { requireAllBytes(); });
  }

  /// Series are made of exactly the bytes that the logger holds. The filling of the last packet is not
  /// counted.
  void requireAllBytes() {
    if (state_.AbortFlag) return;
    const std::int64_t held = record().BytesUsed;
    const auto came = record().RawData ? std::ssize(*record().RawData) : 0;
    if (came < held || came >= held + static_cast<std::int64_t>(logger().lastPacketBytes()))
      fault::raise(fault::Subscript,
                   std::to_string(came) + " bytes came, the logger holds " + std::to_string(held));
    logger().noteStep(RetrieveStep_Downloaded);
  }

  bool decode() {
    bool lowBatterySeen = false;
    if (!attempts_.step(
            [&] { decodeResult = logger().fncDecodeDataArrays(lowBatterySeen, std::nullopt, false); }))
      return false;
    logger().noteStep(RetrieveStep_Decoded);
    lowBattery = lowBattery || lowBatterySeen;
    const bool noSamples = record().Samples < 1;
    switch (record().DecodeResult) {
      case Decode_OK:
        return !noSamples || attempts_.endWith(ReturnCode::NoSamples);
      case Decode_MemoryFull:
        return true;
      case Decode_InputError:
        return attempts_.endWith(ReturnCode::DecodeProblem);
      case Decode_TooLongSinceLastAcqStop:
        attempts_.code = ReturnCode::DecodeProblem;
        return true;
      default:
        return noSamples ? attempts_.endWith(ReturnCode::DecodeProblem) : warn(ReturnCode::DecodeProblem);
    }
  }

  /// A recording that is stopped before its configured end gets the end of its last sample as its stop time
  /// in the logger too.
  bool writeStop() {
    return attempts_.step([&] {
      const double now = Class_TimeZoneTools::fncGetGMTTime();
      if (!isBefore(now, configuredEnd_)) return;
      const double epochsPerDay = SecondsPerDay / record().EpochLength;
      const double stop = std::min(record().StartTimeGMT + record().Samples / epochsPerDay, now);
      logger().subSetVardenAcqStop(VardenLogger::fncDateToLoggerSeconds(stop));
    });
  }

  bool clearDataFlag() {
    return attempts_.step([&] { logger().subSetDataAvailFlag(false); }) &&
           attempts_.step([&] { logger().subCloseDevicePort(); });
  }

  bool finish() {
    logger().noteStep(RetrieveStep_Done);
    if (!isOneOf(attempts_.code, {ReturnCode::SubjectUnusable, ReturnCode::LoggerReset,
                                  ReturnCode::ZoneDiffers, ReturnCode::DecodeProblem}))
      attempts_.code = ReturnCode::Success;
    state_.AbortFlag = false;
    return true;
  }

  MainState& state_;
  const DockedModel* model_;
  std::shared_ptr<Class_Subject>& subject_;
  bool ignoreWarnings_;
  Attempts attempts_;
  bool prepared_ = false;
  double configuredEnd_ = 0;
};

}  // namespace

std::int32_t Class_Main::Retrieve(enmLoggerPointer LoggerType,
                                  std::shared_ptr<Class_VardenLogger>& KestrinData,
                                  std::shared_ptr<Class_Subject>& Subject, enmDecodeResult& DecodeResult,
                                  bool* LowBatteryDetected, std::string* /*XMLfilePath*/, bool IgnoreWarnings,
                                  bool /*ReconfigureAfterRetrieve*/, bool /*AppendData*/) {
  const WorkMark mark(*inside_);
  if (!mark.mayBegin()) return fault::InvalidCall;
  RetrieveWorkflow workflow(*inside_, LoggerType, Subject, IgnoreWarnings);
  const std::int32_t code = workflow.run();
  if (workflow.decodeResult) DecodeResult = *workflow.decodeResult;
  if (LowBatteryDetected != nullptr) *LowBatteryDetected = workflow.lowBattery;
  KestrinData = inside_->ActiveLogger;
  return code;
}

}  // namespace hy_wristlog
