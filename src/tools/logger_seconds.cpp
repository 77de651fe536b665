#include "tools/logger_seconds.h"

#include <string>

#include "base/dates.h"
#include "errors/Procedure.h"

namespace hy_wristlog {

std::int32_t loggerSecondsFromDate(double date, const char* module, std::int32_t tooEarly) {
  constexpr const char* Name = "fncDateToLoggerSeconds";
  Procedure procedure{module, Name};
  return procedure.run([&] {
    if (date < EarliestSecondsDate)
      throw Failure(tooEarly, std::string(module) + '.' + Name, "Date is before 12/13/1901 8:45:52 PM");
    return unixSecondsFromDate(date);
  });
}

}  // namespace hy_wristlog
