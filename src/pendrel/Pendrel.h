#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "hy_wristlog/enumerations.h"
#include "link/LoggerLink.h"
#include "pendrel/record.h"

namespace hy_wristlog {

/// The inside of Class_Pendrel: the record, the link, and what is done with both. Failures carry the source
/// class "Class_Pendrel".
class Pendrel : public LoggerLink {
 public:
  static constexpr char Module[] = "Class_Pendrel";

  PendrelRecord record;

  // The record and its recording: Pendrel.cpp, Pendrel_image.cpp, Pendrel_decode.cpp
  /// The first `count` bytes of the memory image; with 0 the header and all recorded bytes.
  std::vector<std::uint8_t> Get_RawData(std::int32_t count) const;
  /// The days that a battery put in on `date` still lasts. Without arguments it is that of BatteryDate and
  /// the logger's own type.
  float fncBatteryLife(std::optional<double> date = {}, std::optional<enmDeviceType> deviceType = {}) const;
  float Get_BattLifeRemaining() const { return fncBatteryLife(); }
  /// Raises PendrelMemorySize for a memory size outside 1 to 5000 KB.
  void subInitRawData();
  /// Raises PendrelOutOfRange for addresses outside the image and for more addresses than bytes.
  void subSetRawDataBlock(std::int32_t lower, std::int32_t upper, std::span<const std::uint8_t> bytes);
  /// Raises PendrelDeviceType for a type outside the family, PendrelMode for a mode that the type does not
  /// have, DivisionByZero for an ActivityCalibration of 0.
  void subDecodeDataArrays();
  void subShowFormComm();
  void subHideFormComm();

  // Subject text and times: Pendrel_subject.cpp
  void subEncodeSubjectInfo();
  void subDecodeSubjectInfo();
  /// Seconds since 1970. Raises PendrelOutOfRange for dates before 13 December 1901, 20:45:52, and Overflow
  /// beyond 32 bits.
  static std::int32_t fncDateToLoggerSeconds(double date);
  static double fncLoggerSecondsToDate(std::int32_t seconds);

  // The commands: Pendrel_commands.cpp, Pendrel_memory.cpp. A command that is not heard raises NoCharacters
  // or WrongCharacters, a missing answer NoCharacters or NoFinalCharacter, an answer with a wrong sum
  // PendrelChecksum.
  /// 0 when the port is open; 1 for a port in use, 2 for one that does not exist or is closed, 3 for one that
  /// cannot be used. With `settle` it waits two seconds after the opening. Raises PendrelPort for a port
  /// number below 1.
  std::int32_t fncOpenCOMport(std::int16_t intPort, bool settle);
  void subCloseCOMport(bool busyPointer = false);
  /// False, without a failure, when no logger answers.
  bool fncGetPrompt();
  /// Fills the record. A field that cannot be read gets its unknown value.
  void fncReadSetup();
  /// Reads a block and stores it in the memory image too. Raises PendrelBlock for a block that the logger
  /// does not have, PendrelDeviceType for an unknown type, TooFewBytes when bytes are missing and DataOverrun
  /// when the port has lost some.
  std::vector<std::uint8_t> fncReadMemoryBlock(std::int16_t block);
  /// Raises PendrelAddress for an address outside 0 to 65535, TypeMismatch or Overflow for an answer that is
  /// no byte.
  std::uint8_t fncReadMemoryLocation(std::int32_t address);
  /// Raises PendrelAddress for an address outside 0 to 65535.
  void subSetMemorylocation(std::int32_t address, std::uint8_t value);
  void subClearMemory(std::uint8_t value);
  void subResetDevice();

  // The set-up: Pendrel_setup.cpp
  /// With `keepSubject` SubjectInfo is sent as it is; otherwise it is made from the subject's values. Raises
  /// PendrelEpochLength for an epoch and PendrelMode for a mode that the logger does not have, PendrelSetup
  /// for a subject that cannot be encoded.
  void subSendSetup(bool keepSubject);
  /// Returns after how many milliseconds the port should be released, so that the recording starts at
  /// `startUtc`. Raises StartPassed, DelayOutOfBounds, WrongDelayEcho, PendrelChecksum.
  std::int32_t fncSendDelayedStart(double startUtc);
  void subSendBatteryDate(double date);
};

}  // namespace hy_wristlog
