#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/api.h"
#include "hy_wristlog/enumerations.h"

namespace hy_wristlog {

struct MainState;

/// What a host drives: one docked logger at a time, configured, asked for its state, and retrieved.
///
/// The three workflows run to their end on the calling thread and return 0 or a code; docs/contract.md
/// tells what each means. They raise nothing. An object, its loggers and its subjects belong to the thread
/// that made them; other threads may use objects of their own.
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

  /// Prepares the docked logger for a recording: clock, configuration, subject, and reads it back.
  ///
  /// `EpochLength` is 15, 30, 60, 120 or 300 seconds. `TimeZoneAbbrev` is one of the zone catalogue's three
  /// letters; empty takes the machine's zone. The three times are local logger seconds (since 1970-01-01); 0
  /// means not given: set the logger to the present time, start as soon as possible, never stop. A start
  /// without an end is refused with WrongEnd for epochs of up to 120 seconds. Both formats must be given for
  /// a Kestrin 2 too, which has no display: Unknown ends as OutOfRange once the logger has been stopped. The
  /// subject's weight and height must be whole tenths, since others do not come back as they were written
  /// (VerificationFailed), and its Identity fits 64 characters; an empty Identity or GUID is filled in. The
  /// outputs are set on success.
  std::int32_t Configure(enmLoggerPointer LoggerType, enmVardenLoggingMode AcquisitionMode,
                         std::int32_t EpochLength, Class_Subject& Subject,
                         const std::string& TimeZoneAbbrev = {}, bool AutoDSTadjust = false,
                         std::int32_t LoggerLocalSetTime = 0, std::int32_t DataCollectionLocalStartTime = 0,
                         std::int32_t DataCollectionLocalEndTime = 0,
                         enmDateFormat DateFormat = DateFormat_Unknown,
                         enmTimeFormat TimeFormat = TimeFormat_Unknown, float* BatteryLifeRemaining = nullptr,
                         std::string* DeviceSerialNumber = nullptr);

  double LoggerSecondsToDate(std::int32_t LoggerSeconds1970);
  /// Seconds since 1970-01-01 of a date. A date they cannot hold gives 0.
  std::int32_t DateToLoggerSeconds(double TheDate);

  /// Says in one short and one long text what state the docked logger is in. The objects are set unless more
  /// than one dock is connected; the battery's remaining days only when a logger's type is known.
  std::int32_t GetStatus(enmLoggerPointer LoggerType, std::string& SimpleStatus, std::string& LongStatus,
                         std::shared_ptr<Class_VardenLogger>& KestrinData,
                         std::shared_ptr<Class_Subject>& Subject, float* BatteryLifeRemaining = nullptr);

  /// Stops the docked logger, reads its whole memory and decodes it. `Subject` must hold an object (it gets
  /// the logger's subject); without one the code is 91. `KestrinData` is handed out whatever the code.
  /// `XMLfilePath`, `ReconfigureAfterRetrieve` and `AppendData` are accepted and read by nothing.
  std::int32_t Retrieve(enmLoggerPointer LoggerType, std::shared_ptr<Class_VardenLogger>& KestrinData,
                        std::shared_ptr<Class_Subject>& Subject, enmDecodeResult& DecodeResult,
                        bool* LowBatteryDetected = nullptr, std::string* XMLfilePath = nullptr,
                        bool IgnoreWarnings = false, bool ReconfigureAfterRetrieve = false,
                        bool AppendData = false);

  /// Asks the running workflow to stop; takes effect at its next checkpoint. Only to be called while the
  /// library serves the host's events (`Host::serveEvents`); between workflows it does nothing. Retrieve ends
  /// with Aborted. Configure ends with 0 all the same, its outputs untouched, or with the failure of what the
  /// abort broke off. GetStatus is not stopped.
  void AbortComms();

  /// For the library's own rooms.
  MainState& inside() { return *state_; }

 private:
  friend class PendrelWorkflows;

  std::unique_ptr<MainState> state_;
};

}  // namespace hy_wristlog
