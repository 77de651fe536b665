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

class Pendrel;

/// Everything that is known about one logger of the older Pendrel family: set-up, subject, and the decoded
/// recording. Dates are in the logger's local time; -1 is unknown. An object belongs to the thread that made
/// it.
///
/// pendrel_properties.inc lists the properties: each has a `Get_`, those with GetLet also a `Let_`.
/// - `EpochLength`: seconds; -1 unknown.
/// - `StartTime`: a part of a day.
/// - `BytesUsed`: the recorded bytes, without the 128 bytes of the memory's header; -1 unknown.
/// - `BattLifeRemaining`: days.
/// - `GMToffset`: minutes to add to UTC; -32768 unknown.
/// - `SubjectGUID`: 32 hexadecimal digits.
/// - `SubjectHeight`, `SubjectWeight`: -1 unknown.
/// - `StepsArray`: one empty element for a type that counts no steps.
class HY_WRISTLOG_API Class_Pendrel {
 public:
  Class_Pendrel();
  ~Class_Pendrel();
  Class_Pendrel(const Class_Pendrel&) = delete;
  Class_Pendrel& operator=(const Class_Pendrel&) = delete;

  template <class T>
  using View = std::conditional_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, T, const T&>;

#define HY_GET(Name, Type) View<Type> Get_##Name() const;
#define HY_LET(Name, Type) void Let_##Name(View<Type> value);
#define HY_COMPUTED(Name, Type) Type Get_##Name() const;
#include "hy_wristlog/pendrel_properties.inc"

  void subscribe(std::shared_ptr<LoggerEvents> events);
  void unsubscribe(const std::shared_ptr<LoggerEvents>& events);

 private:
  friend struct Inside;

  std::unique_ptr<Pendrel> inside_;
};

}  // namespace hy_wristlog
