#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "hy_wristlog/api.h"
#include "hy_wristlog/date.h"
#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/logger_events.h"
#include "hy_wristlog/series.h"

namespace hy_wristlog {

class VardenLogger;

/// Everything that is known about one logger of the Varden family: configuration, subject, clock, battery,
/// recording and decoded series. Dates are in UTC; -1 is unknown. An object belongs to the thread that made
/// it.
///
/// varden_properties.inc lists the properties: each has a `Get_`, those with GetLet or LetGet also a `Let_`.
/// They read and write the object and talk to no logger. `BattLifeRemaining` and `BatteryPercent` are worked
/// out at each read and raise the failure WrongDeviceType for a device type that they are not defined for.
///
/// `RawData` holds the bytes that the last Retrieve has read of the recording, or those that were given to
/// DecodeRecording: all of them or, when `RawDataIsPart`, the longest beginning that any of its attempts has
/// received in good packets. `BytesInLogger` says how many bytes the logger held, `ConfigBlock` is the config
/// block that belongs to them, and `RetrieveStep` says how far Retrieve has come. A failed or aborted
/// Retrieve keeps them; the next one hands out a logger of its own.
///
/// `EventTimes`, `EventTexts` and `EventRecords` have one element for each decoded event: its time, what
/// happened, and its bytes in hexadecimal. They, `RawData` and `ConfigBlock` are made anew at each read.
class HY_WRISTLOG_API Class_VardenLogger {
 public:
  Class_VardenLogger();
  ~Class_VardenLogger();
  Class_VardenLogger(const Class_VardenLogger&) = delete;
  Class_VardenLogger& operator=(const Class_VardenLogger&) = delete;

  template <class T>
  using View = std::conditional_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, T, const T&>;

#define HY_GET(Name, Type) View<Type> Get_##Name() const;
#define HY_LET(Name, Type) void Let_##Name(View<Type> value);
#define HY_COMPUTED(Name, Type) Type Get_##Name();
#include "hy_wristlog/varden_properties.inc"

  /// Makes the docked logger compute the checksum of its configuration anew, by changing its clock mode and
  /// changing it back. The port must be open. Raises NoCharacters, NoFinalCharacter, WrongCharacters and
  /// DamagedAnswer.
  void subVardenConfigCRCreset();

  /// Makes this object the logger that a saved config block describes, and decodes its saved bytes, of which
  /// the beginning will do. `FirmwareVersion`, like "01.01.0007", counts more than that of the block, and
  /// must be given for a block of version 1, which has none. `Diagnostic` goes on after some damage. With the
  /// moment of the retrieval (UTC) in `SeenAt` the result is that of Retrieve; -1 stands for now, when a
  /// recording of long ago is Decode_TooLongSinceLastAcqStop. Raises InvalidCall while the logger's port is
  /// open; OutOfRange without bytes; UnknownStructure and DamagedConfig for a block that cannot be read; and
  /// WrongDeviceType, OutOfRange, Subscript, OutOfMemory and DivisionByZero for bytes that cannot be decoded
  /// with it. After a failure the object holds what could be read.
  enmDecodeResult DecodeRecording(const ByteSeries& ConfigBlock, const ByteSeries& RawData,
                                  const std::string& FirmwareVersion = {}, bool* LowBatteryDetected = nullptr,
                                  bool Diagnostic = false, Date SeenAt = -1);

  void subscribe(std::shared_ptr<LoggerEvents> events);
  void unsubscribe(const std::shared_ptr<LoggerEvents>& events);

 private:
  friend struct Inside;

  std::unique_ptr<VardenLogger> inside_;
};

}  // namespace hy_wristlog
