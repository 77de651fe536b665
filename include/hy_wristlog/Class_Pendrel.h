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

class Pendrel;

/// Everything that is known about one logger of the older Pendrel family: set-up, subject, and the decoded
/// recording. Dates are day counts from 30 December 1899 in the logger's local time; -1 is unknown. Belongs
/// to the thread it was made on.
///
/// `EpochLength` is in seconds, -1 unknown; `StartTime` a part of a day; `BytesUsed` counts what was recorded
/// behind the memory's 128-byte header, -1 unknown; `BattLifeRemaining` is in days; `GMToffset` in minutes to
/// add to UTC, -32768 unknown; `SubjectGUID` 32 hexadecimal digits; `SubjectHeight` and `SubjectWeight` -1
/// unknown. `StepsArray` has one empty element for a type that counts no steps.
class HY_WRISTLOG_API Class_Pendrel {
 public:
  Class_Pendrel();
  ~Class_Pendrel();
  Class_Pendrel(const Class_Pendrel&) = delete;
  Class_Pendrel& operator=(const Class_Pendrel&) = delete;

  template <class T>
  using View = std::conditional_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, T, const T&>;

#define HY_ACCESS_GetLet(Name, Type) HY_ACCESS_GetOnly(Name, Type) void Let_##Name(View<Type> value);
#define HY_ACCESS_GetOnly(Name, Type) View<Type> Get_##Name() const;
#define HY_STORED(Name, Type, Access) HY_ACCESS_##Access(Name, Type)
#define HY_COMPUTED(Name, Type) Type Get_##Name() const;
#include "hy_wristlog/pendrel_properties.inc"
#undef HY_ACCESS_GetLet
#undef HY_ACCESS_GetOnly
#undef HY_STORED
#undef HY_COMPUTED

  void subscribe(std::shared_ptr<LoggerEvents> events);
  void unsubscribe(const std::shared_ptr<LoggerEvents>& events);

  /// For the library's own rooms.
  Pendrel& inside() { return *inside_; }
  const Pendrel& inside() const { return *inside_; }

 private:
  std::unique_ptr<Pendrel> inside_;
};

}  // namespace hy_wristlog
