#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "hy_wristlog/api.h"
#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/logger_events.h"
#include "hy_wristlog/series.h"

namespace hy_wristlog {

class VardenLogger;

/// Everything that is known about one logger of the Varden family: configuration, subject, clock, battery,
/// recording and decoded series. Dates are day counts from 30 December 1899, UTC; -1 is unknown. Belongs to
/// the thread it was made on. Getters and setters only get and set; those that are worked out
/// (`BattLifeRemaining`, `BatteryPercent`) raise Failure WrongDeviceType for a device type they do not fit.
class HY_WRISTLOG_API Class_VardenLogger {
 public:
  Class_VardenLogger();
  explicit Class_VardenLogger(std::unique_ptr<VardenLogger> inside);
  ~Class_VardenLogger();
  Class_VardenLogger(const Class_VardenLogger&) = delete;
  Class_VardenLogger& operator=(const Class_VardenLogger&) = delete;

  template <class T>
  using View = std::conditional_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, T, const T&>;

#define HY_GET(Name, Type) View<Type> Get_##Name() const;
#define HY_LET(Name, Type) void Let_##Name(View<Type> value);
#define HY_ACCESS_GetLet(Name, Type) HY_GET(Name, Type) HY_LET(Name, Type)
#define HY_ACCESS_LetGet(Name, Type) HY_LET(Name, Type) HY_GET(Name, Type)
#define HY_ACCESS_GetOnly(Name, Type) HY_GET(Name, Type)
#define HY_STORED(Name, Type, Access, Copy) HY_ACCESS_##Access(Name, Type)
#define HY_COMPUTED(Name, Type) Type Get_##Name();
#include "hy_wristlog/varden_properties.inc"
#undef HY_GET
#undef HY_LET
#undef HY_ACCESS_GetLet
#undef HY_ACCESS_LetGet
#undef HY_ACCESS_GetOnly
#undef HY_STORED
#undef HY_COMPUTED

  /// Makes the docked logger compute its configuration's checksum anew by changing its clock mode forth and
  /// back. The port must be open. Raises NoCharacters, NoFinalCharacter and WrongCharacters and
  /// DamagedAnswer.
  void subVardenConfigCRCreset();

  void subscribe(std::shared_ptr<LoggerEvents> events);
  void unsubscribe(const std::shared_ptr<LoggerEvents>& events);

  /// For the library's own rooms.
  VardenLogger& inside() { return *inside_; }
  const VardenLogger& inside() const { return *inside_; }

 private:
  std::unique_ptr<VardenLogger> inside_;
};

}  // namespace hy_wristlog
