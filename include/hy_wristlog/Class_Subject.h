#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include "hy_wristlog/api.h"
#include "hy_wristlog/date.h"

namespace hy_wristlog {

/// The person who wears a logger. subject_properties.inc lists the properties: each has a `Get_` and, except
/// `Age`, a `Let_`.
///
/// `Age` is the number of whole years from the date of birth to now, as text; "0" without a date of birth. It
/// raises the failure InvalidCall for a date outside the years 100 to 9999. `Gender` is one capital letter or
/// empty: it keeps the first character of what it is given, in upper case.
class HY_WRISTLOG_API Class_Subject {
 public:
  template <class T>
  using View = std::conditional_t<std::is_arithmetic_v<T>, T, const T&>;

#define HY_STORED(Name, Type)                       \
  View<Type> Get_##Name() const { return Name##_; } \
  void Let_##Name(Type value) { Name##_ = std::move(value); }
#define HY_TIDIED(Name, Type)                       \
  View<Type> Get_##Name() const { return Name##_; } \
  void Let_##Name(View<Type> value);
#define HY_COMPUTED(Name, Type) Type Get_##Name() const;
#include "hy_wristlog/subject_properties.inc"

 private:
#define HY_STORED(Name, Type) Type Name##_{};
#define HY_TIDIED(Name, Type) Type Name##_{};
#include "hy_wristlog/subject_properties.inc"
};

}  // namespace hy_wristlog
