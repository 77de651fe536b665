#include <string>

#include "base/dates.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "pendrel/setup_answer.h"
#include "platform/platform.h"
#include "timezones/Class_TimeZoneTools.h"
#include "workflows/pendrel/pendrel_run.h"
#include "workflows/subject_of.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int16_t RepairedEpoch = 30;
constexpr std::int32_t BlockBytes = PendrelRecord::BlockBytes;
constexpr int MostFailuresOfABlock = 5;
constexpr double ReadingPercent = 15;

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
    using Self = RetrievePendrelWorkflow;
    constexpr bool (Self::*Steps[])() = {&Self::checkMode,    &Self::mendSetup,   &Self::tellBattery,
                                         &Self::settleZone,   &Self::takeSubject, &Self::readMemory,
                                         &Self::decodeMemory, &Self::finish};
    return run_.run([&] {
      state_.PendrelBytesRead = 0;
      if (!reachPendrelLogger(run_, workflows_, state_, searchPort_) || run_.aborted()) return;
      run_.take(*this, Steps, WorkflowRun::Checkpoints::None);
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

  /// Unless `sound`: repairs it, or ends with the code when nothing is to be repaired.
  template <class Repair>
  bool mend(bool sound, std::int32_t code, Repair&& repair) {
    if (sound) return true;
    return repair_ ? run_.step(repair) : run_.endWith(code);
  }

  bool mendSetup() {
    return mend(record().BytesUsed != PendrelRecord::NoLength, ReturnCode::UnknownLength,
                [&] { record().BytesUsed = record().Get_MaxBytesUsed(); }) &&
           mend(record().StartDate != UnknownDate, ReturnCode::WrongStart,
                [&] { record().StartDate = datePart(now()); }) &&
           mend(record().StartTime != UnknownDate, ReturnCode::WrongStart,
                [&] {
                  const double local = now();
                  record().StartTime = local - datePart(local);
                }) &&
           mend(record().hasUsualEpoch(), ReturnCode::WrongEpoch,
                [&] { record().EpochLength = RepairedEpoch; });
  }

  bool tellBattery() {
    return run_.step([&] { batteryLife_ = logger().Get_BattLifeRemaining(); });
  }

  bool mendZone(bool sound) {
    if (!sound && !platform::current().zones().trouble().empty())
      return run_.endWith(ReturnCode::UnknownZone);
    return mend(sound, ReturnCode::UnknownZone, [&] {
      const LocalZone local = TimeZoneTools().fncLocalTimeZoneName();
      record().AutoDSTadjust = local.Daylight;
      record().GMToffset = local.Offset;
      record().TimeZoneAbbrev = local.Abbreviation;
    });
  }

  bool settleZone() {
    if (!mendZone(!record().TimeZoneAbbrev.empty() && record().GMToffset != PendrelRecord::NoOffset))
      return false;
    if (record().TimeZoneAbbrev == PendrelRecord::UnknownZone)
      return mendZone(run_.step([&] { return takeZoneOfOffset(record()); }));
    return mendZone(
        run_.step([&] { return TimeZoneTools().fncGetTZIfromAbbrev(record().TimeZoneAbbrev) != nullptr; }));
  }

  bool takeSubject() {
    if (!hasUsableSubject(record()) && !repair_) return run_.endWith(ReturnCode::SubjectUnusable);
    return run_.step([&] { subject_ = subjectOf(record()); });
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

  /// A block is read again only when the port has lost data.
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
    return run_.step([&] { logger().subDecodeDataArrays(); });
  }

  bool finish() {
    run_.code = ReturnCode::Success;
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
