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
  /// The first `count` bytes of the memory image; 0 stands for header and recorded bytes together.
  std::vector<std::uint8_t> Get_RawData(std::int32_t count) const;
  /// Days left of the battery put in on `date`; BatteryDate and the logger's own type when they are missing.
  float fncBatteryLife(std::optional<double> date = {}, std::optional<enmDeviceType> deviceType = {}) const;
  float Get_BattLifeRemaining() const { return fncBatteryLife(); }
  /// Raises PendrelMemorySize for a memory size outside 1 to 5000 KB.
  void subInitRawData();
  /// Raises PendrelOutOfRange for addresses outside the image, or more of them than bytes.
  void subSetRawDataBlock(std::int32_t lower, std::int32_t upper, std::span<const std::uint8_t> bytes);
  /// Raises PendrelDeviceType for a type that is none of the family, PendrelMode for a mode that the type
  /// does not have, 11 for an ActivityCalibration of 0.
  void subDecodeDataArrays();
  void subShowFormComm();
  void subHideFormComm();

  // Subject text and times: Pendrel_subject.cpp
  void subEncodeSubjectInfo();
  void subDecodeSubjectInfo();
  /// Seconds since 1970. Raises PendrelOutOfRange for dates before 13 December 1901, 20:45:52, fault 6 beyond
  /// 32 bits.
  static std::int32_t fncDateToLoggerSeconds(double date);
  static double fncLoggerSecondsToDate(std::int32_t seconds);

  // The commands: Pendrel_commands.cpp, Pendrel_memory.cpp. One that is not heard raises NoCharacters or
  // WrongCharacters, an answer that stays away NoCharacters or NoFinalCharacter, one whose sum is wrong
  // PendrelChecksum.
  /// 0, or 1 for a port in use, 2 for a port that does not exist or is closed, 3 for one that cannot be used.
  /// With `settle` two seconds pass behind the opening. Raises PendrelPort for a port number below 1.
  std::int32_t fncOpenCOMport(std::int16_t intPort, bool settle);
  void subCloseCOMport(bool busyPointer = false);
  /// False, without a failure, when no logger answers.
  bool fncGetPrompt();
  /// Fills the record. A field that cannot be read gets its unknown value.
  void fncReadSetup();
  /// Also stores the block in the memory image. Raises PendrelBlock for a block that the logger does not
  /// have, PendrelDeviceType for an unknown type, TooFewBytes and DataOverrun for too few bytes and lost
  /// ones.
  std::vector<std::uint8_t> fncReadMemoryBlock(std::int16_t block);
  /// Raises PendrelAddress for an address outside 0 to 65535, 13 or 6 for an answer that is no byte.
  std::uint8_t fncReadMemoryLocation(std::int32_t address);
  /// Raises PendrelAddress for an address outside 0 to 65535.
  void subSetMemorylocation(std::int32_t address, std::uint8_t value);
  void subClearMemory(std::uint8_t value);
  void subResetDevice();

  // The set-up: Pendrel_setup.cpp
  /// With `keepSubject` SubjectInfo goes as it stands; else it is made from the subject's values. Raises
  /// PendrelEpochLength for the epoch length, PendrelSetup for a subject that cannot be encoded, PendrelMode
  /// for the mode.
  void subSendSetup(bool keepSubject);
  /// Milliseconds until the port should be released, so that the recording starts at `startUtc`. Raises
  /// StartPassed, DelayOutOfBounds, WrongDelayEcho, PendrelChecksum.
  std::int32_t fncSendDelayedStart(double startUtc);
  void subSendBatteryDate(double date);
};

}  // namespace hy_wristlog
