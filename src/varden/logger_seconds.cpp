#include "varden/logger_seconds.h"

#include "base/dates.h"
#include "tools/logger_seconds.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {

std::int32_t dateToLoggerSeconds(double date) {
  constexpr std::int32_t TooEarly = 11503;
  return loggerSecondsFromDate(date, "Class_VardenLogger", TooEarly);
}

double VardenLogger::fncLoggerSecondsToDate(std::int32_t seconds) { return dateFromUnixSeconds(seconds); }

std::int32_t VardenLogger::fncDateToLoggerSeconds(double date) { return dateToLoggerSeconds(date); }

}  // namespace hy_wristlog
