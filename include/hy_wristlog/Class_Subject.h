#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include "hy_wristlog/api.h"

namespace hy_wristlog {

/// The person who wears a logger. Dates are day counts from 30 December 1899.
class HY_WRISTLOG_API Class_Subject {
 public:
  template <class T>
  using View = std::conditional_t<std::is_arithmetic_v<T>, T, const T&>;

  // Age: whole years from the date of birth to now, as text; "0" without a date of birth. Raises fault 5 for
  // a date outside the years 100 to 9999. Gender: one capital letter, or empty; keeps the first character of
  // what it is given, in upper case.
#define HY_STORED(Name, Type)                       \
  View<Type> Get_##Name() const { return Name##_; } \
  void Let_##Name(Type value) { Name##_ = std::move(value); }
#define HY_TIDIED(Name, Type)                       \
  View<Type> Get_##Name() const { return Name##_; } \
  void Let_##Name(View<Type> value);
#define HY_COMPUTED(Name, Type) Type Get_##Name() const;
#include "hy_wristlog/subject_properties.inc"
#undef HY_STORED
#undef HY_TIDIED
#undef HY_COMPUTED

 private:
#define HY_STORED(Name, Type) Type Name##_{};
#define HY_TIDIED(Name, Type) Type Name##_{};
#define HY_COMPUTED(Name, Type)
#include "hy_wristlog/subject_properties.inc"
#undef HY_STORED
#undef HY_TIDIED
#undef HY_COMPUTED
};

}  // namespace hy_wristlog
