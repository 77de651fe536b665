#include <string>

#include "base/dates.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "workflows/pendrel/pendrel_run.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int32_t NoLength = -1;
constexpr std::int16_t NoOffset = -32768, RepairedEpoch = 30;
constexpr std::int32_t BlockBytes = PendrelRecord::BlockBytes;
constexpr int MostFailuresOfABlock = 5;
constexpr double ReadingPercent = 15;
constexpr const char* UnknownZoneMark = "UNK";

bool hasUsableSubject(const PendrelRecord& record) {
  return record.SubjectDOB != UnknownDate && !record.SubjectGender.empty() && !record.SubjectGUID.empty() &&
         !record.SubjectIdentity.empty() && record.SubjectHeight >= 0 && record.SubjectWeight >= 0;
}

class RetrievePendrelWorkflow {
 public:
  RetrievePendrelWorkflow(PendrelWorkflows& workflows, MainState& state, Class_Subject& subject,
                          float& batteryLife, bool searchPort, bool repair)
      : workflows_(workflows),
        state_(state),
        subject_(subject),
        batteryLife_(batteryLife),
        searchPort_(searchPort),
        repair_(repair),
        run_(state, "RetrieveLegacy",
             {NoCharacters, NoFinalCharacter, WrongCharacters, TooFewBytes, PendrelChecksum,
              ReturnCode::UnreadableBlock}) {}

  std::int32_t run() {
    using Step = bool (RetrievePendrelWorkflow::*)();
    constexpr Step Steps[] = {&RetrievePendrelWorkflow::checkMode,   &RetrievePendrelWorkflow::mendSetup,
                              &RetrievePendrelWorkflow::tellBattery, &RetrievePendrelWorkflow::settleZone,
                              &RetrievePendrelWorkflow::takeSubject, &RetrievePendrelWorkflow::readMemory,
                              &RetrievePendrelWorkflow::decodeMemory};
    return run_.run([&] {
      state_.PendrelBytesRead = 0;
      if (!reachPendrelLogger(run_, workflows_, state_, searchPort_)) return;
      for (const Step step : Steps)
        if (!(this->*step)()) return;
      run_.code = ReturnCode::Success;
    });
  }

 private:
  Pendrel& logger() { return state_.pendrel(); }
  PendrelRecord& record() { return logger().record; }

  bool checkMode() {
    return record().Get_DeviceType() != KR_PENDREL_CRC_STEPS ||
           record().AcquisitionMode == PD_Mode_ActivityOnly ||
           record().AcquisitionMode == PD_Mode_ActivityAndSteps || run_.endWith(ReturnCode::WrongMode);
  }

  /// Repairs what is not `sound`, or ends with the code.
  template <class Repair>
  bool mend(bool sound, std::int32_t code, Repair&& repair) {
    if (sound) return true;
    if (!repair_) return run_.endWith(code);
    run_.step(repair);
    return true;
  }

  bool mendSetup() {
    return mend(record().BytesUsed != NoLength, ReturnCode::UnknownLength,
                [&] { record().BytesUsed = record().Get_MaxBytesUsed(); }) &&
           mend(record().StartDate != UnknownDate, ReturnCode::WrongStart,
                [&] { record().StartDate = datePart(now()); }) &&
           mend(record().StartTime != UnknownDate, ReturnCode::WrongStart,
                [&] {
                  const double local = now();
                  record().StartTime = local - datePart(local);
                }) &&
           mend(isOneOf(record().EpochLength, {15, 30, 60}), ReturnCode::WrongEpoch,
                [&] { record().EpochLength = RepairedEpoch; });
  }

  bool tellBattery() {
    run_.step([&] { batteryLife_ = logger().Get_BattLifeRemaining(); });
    return true;
  }

  bool mendZone(bool sound) {
    return mend(sound, ReturnCode::UnknownZone, [&] {
      const LocalZone local = TimeZoneTools().fncLocalTimeZoneName();
      record().AutoDSTadjust = local.Daylight;
      record().GMToffset = local.Offset;
      record().TimeZoneAbbrev = local.Abbreviation;
    });
  }

  bool settleZone() {
    if (!mendZone(!record().TimeZoneAbbrev.empty() && record().GMToffset != NoOffset)) return false;
    if (record().TimeZoneAbbrev == UnknownZoneMark) return nameZone();
    return mendZone(
        run_.step([&] { return TimeZoneTools().fncGetTZIfromAbbrev(record().TimeZoneAbbrev) != nullptr; }));
  }

  /// Takes the first zone of the catalogue whose clocks stood as the logger's at the start.
  bool nameZone() {
    return mendZone(run_.step([&] {
      TimeZoneTools().fncPopulateTZICollection();
      const double start = record().StartDate + record().StartTime;
      for (const TimeZoneRef& zone : TimeZoneTools().Get_TimeZoneArray()) {
        if (Class_TimeZoneTools::fncCalcOffset(start, *zone, record().AutoDSTadjust) != record().GMToffset)
          continue;
        if (!zone->Abbreviation.empty()) record().TimeZoneAbbrev = zone->Abbreviation;
        return true;
      }
      return false;
    }));
  }

  bool takeSubject() {
    if (!hasUsableSubject(record()) && !repair_) return run_.endWith(ReturnCode::SubjectUnusable);
    run_.step([&] {
      subject_.Let_DOB(record().SubjectDOB);
      subject_.Let_Gender(record().SubjectGender);
      subject_.Let_GUID(record().SubjectGUID);
      subject_.Let_Height(record().SubjectHeight);
      subject_.Let_Identity(record().SubjectIdentity);
      subject_.Let_Initials(record().SubjectInitials);
      subject_.Let_Weight(record().SubjectWeight);
    });
    return true;
  }

  bool readMemory() {
    run_.step([&] { logger().subInitRawData(); });
    const std::int16_t blocks = record().Get_BlocksToDownload();
    for (std::int16_t block = 0; block < blocks; ++block) {
      state_.PendrelProgressPercent = roundToInt16(block * ReadingPercent / blocks);
      if (run_.aborted()) return false;
      run_.step([&] { readBlock(block); });
      state_.PendrelBytesRead += BlockBytes;
      platform::current().host().downloadProgress(state_.PendrelBytesRead, blocks * BlockBytes);
    }
    return true;
  }

  /// Only data that the port has lost are worth asking for again.
  void readBlock(std::int16_t block) {
    for (int failures = 0;;) {
      try {
        logger().fncReadMemoryBlock(block);
        return;
      } catch (const Failure& failure) {
        if (failure.Number != DataOverrun) throw;
      }
      globals().emptyErrorStack();
      if (++failures == MostFailuresOfABlock)
        throw Failure(ReturnCode::UnreadableBlock, "Class_Main.RetrieveLegacy",
                      "Block " + std::to_string(block) + " of the memory could not be read");
    }
  }

  bool decodeMemory() {
    run_.step([&] { logger().subDecodeDataArrays(); });
    return true;
  }

  PendrelWorkflows& workflows_;
  MainState& state_;
  Class_Subject& subject_;
  float& batteryLife_;
  bool searchPort_, repair_;
  PendrelRun run_;
};

}  // namespace

std::int32_t PendrelWorkflows::RetrieveLegacy(Class_Subject& Subject, bool /*Unread*/,
                                              float& BatteryLifeRemaining, bool SearchCOMport,
                                              bool RepairSetup) {
  return RetrievePendrelWorkflow(*this, state_, Subject, BatteryLifeRemaining, SearchCOMport, RepairSetup)
      .run();
}

}  // namespace hy_wristlog
