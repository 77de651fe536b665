#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/api.h"
#include "hy_wristlog/date.h"
#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/series.h"

namespace hy_wristlog {

struct MainState;

/// Works with one docked logger at a time: configures it, asks for its state, retrieves its recording.
///
/// The three workflows run to their end on the calling thread and return ReturnCode::Success or a code;
/// docs/contract.md tells what each means. They raise nothing. An object, its loggers and its subjects belong
/// to the thread that made them; other threads may use objects of their own.
class HY_WRISTLOG_API Class_Main {
 public:
  Class_Main();
  ~Class_Main();
  Class_Main(const Class_Main&) = delete;
  Class_Main& operator=(const Class_Main&) = delete;

  /// How many attempts Configure and Retrieve may make; below 1 counts as 1.
  std::int16_t Get_MaxCommunicationRetries() const;
  void Let_MaxCommunicationRetries(std::int16_t value);
  /// "major.minor.revision".
  std::string Get_Version() const;
  bool Get_LegacyClearMemoryOnConfigure() const;
  void Let_LegacyClearMemoryOnConfigure(bool value);
  std::int16_t Get_LegacyCOMport() const;
  /// Whether the waits of this object's workflows end with the byte that they wait for. False at first: then
  /// they look for bytes in fixed rounds, of 50 ms in a transfer, and serve events in each of them. When
  /// true, a download takes hardly longer than its bytes take on the wire, and events are served when bytes
  /// come and at least every 50 ms; an abort ends every wait, so that a workflow ends within 1.5 s of it. A
  /// logger that answers in time gives the same results, codes, events and texts, and gets the same pauses
  /// that it needs.
  bool Get_WakeOnInput() const;
  void Let_WakeOnInput(bool value);

  /// Prepares the docked logger for a recording: clock, configuration, subject, and reads it back.
  ///
  /// `EpochLength` is 15, 30, 60, 120 or 300 seconds. `TimeZoneAbbrev` is one of the abbreviations of three
  /// letters in the zone catalogue; empty takes the machine's zone.
  ///
  /// The three times are local logger seconds (since 1970-01-01). 0 means not given: the logger is set to the
  /// present time, starts as soon as possible, never stops. A start without an end is refused with WrongEnd
  /// for epochs of up to 120 seconds.
  ///
  /// Both formats must be given, also for a Kestrin 2, which has no display: with an Unknown one the workflow
  /// stops the logger and then ends with OutOfRange.
  ///
  /// The subject's weight and height must be whole tenths: others do not come back as they were written,
  /// which ends in VerificationFailed. Its Identity has at most 64 characters. An empty Identity or GUID is
  /// filled in. The outputs are set on success.
  std::int32_t Configure(enmLoggerPointer LoggerType, enmVardenLoggingMode AcquisitionMode,
                         std::int32_t EpochLength, Class_Subject& Subject,
                         const std::string& TimeZoneAbbrev = {}, bool AutoDSTadjust = false,
                         std::int32_t LoggerLocalSetTime = 0, std::int32_t DataCollectionLocalStartTime = 0,
                         std::int32_t DataCollectionLocalEndTime = 0,
                         enmDateFormat DateFormat = DateFormat_Unknown,
                         enmTimeFormat TimeFormat = TimeFormat_Unknown, float* BatteryLifeRemaining = nullptr,
                         std::string* DeviceSerialNumber = nullptr);

  Date LoggerSecondsToDate(std::int32_t LoggerSeconds1970);
  /// Seconds since 1970-01-01. A date whose seconds do not fit gives 0.
  std::int32_t DateToLoggerSeconds(Date TheDate);

  /// Says in one short and one long text what state the docked logger is in. `KestrinData` and `Subject` are
  /// set unless more than one dock is connected, `BatteryLifeRemaining` (days) only when the type of the
  /// logger is known.
  std::int32_t GetStatus(enmLoggerPointer LoggerType, std::string& SimpleStatus, std::string& LongStatus,
                         std::shared_ptr<Class_VardenLogger>& KestrinData,
                         std::shared_ptr<Class_Subject>& Subject, float* BatteryLifeRemaining = nullptr);

  /// Stops the docked logger, reads its whole memory and decodes it. `Subject` must hold an object, which
  /// gets the logger's subject; without one the workflow returns the failure number ObjectNotSet.
  /// `KestrinData` is set whatever the code. `XMLfilePath`, `ReconfigureAfterRetrieve` and `AppendData` have
  /// no effect.
  std::int32_t Retrieve(enmLoggerPointer LoggerType, std::shared_ptr<Class_VardenLogger>& KestrinData,
                        std::shared_ptr<Class_Subject>& Subject, enmDecodeResult& DecodeResult,
                        bool* LowBatteryDetected = nullptr, std::string* XMLfilePath = nullptr,
                        bool IgnoreWarnings = false, bool ReconfigureAfterRetrieve = false,
                        bool AppendData = false);

  /// Asks the running workflow to stop at its next checkpoint, and ends its waits when WakeOnInput is true.
  /// May only be called while the library serves the host's events (`Host::serveEvents`); between workflows
  /// it does nothing. Retrieve ends with Aborted. Configure ends with Success all the same and leaves its
  /// outputs as they were, or ends with the failure of what the abort broke off. GetStatus ends with Aborted
  /// too, its outputs as they were but for the text.
  void AbortComms();

  /// What hosts of the component have of docks.h, which says more. The names of all docks.
  TextSeries Get_DockNames() const;
  /// All names of a dock, the first of DockNames in front; empty when no dock answers to `Name`.
  static TextSeries NamesOfDock(const std::string& Name);
  /// LggrPntr_None for no dock.
  static enmLoggerPointer ModelOfDock(const std::string& Name);
  /// 0 for none.
  static std::int32_t PortOfDock(const std::string& Name);
  /// Chooses the calling thread's dock; an empty name gives it all docks again.
  static void UseDock(const std::string& Name);
  /// The same for a path or address, whether it is declared or not.
  static void UseDevice(const std::string& Device, enmLoggerPointer LoggerType);
  /// Empty when the calling thread has all docks.
  std::string Get_DockInUse() const;

  /// The name of a return code or failure number: "NotFound". Empty when there is none of this number.
  static std::string CodeName(std::int32_t Code);
  /// What a return code or failure number means and what to do about it, in one or two sentences; with
  /// LggrPntr_Pendreader what it means of a Pendrel logger.
  static std::string CodeMeaning(std::int32_t Code, enmLoggerPointer LoggerType = LggrPntr_None);
  /// "Decode_OK" for Decode_OK. Empty when there is no such result.
  static std::string ResultName(enmDecodeResult Result);
  /// What the result says of a recording, in one sentence.
  static std::string ResultMeaning(enmDecodeResult Result);

 private:
  friend struct Inside;

  std::unique_ptr<MainState> inside_;
};

}  // namespace hy_wristlog
