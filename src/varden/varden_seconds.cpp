#include "varden/varden_seconds.h"

#include "base/dates.h"
#include "hy_wristlog/failure_numbers.h"
#include "tools/logger_seconds.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {

std::int32_t dateToLoggerSeconds(double date) {
  return loggerSecondsFromDate(date, "Class_VardenLogger", FailureNumber::OutOfRange);
}

double VardenLogger::fncLoggerSecondsToDate(std::int32_t seconds) { return dateFromUnixSeconds(seconds); }

std::int32_t VardenLogger::fncDateToLoggerSeconds(double date) { return dateToLoggerSeconds(date); }

}  // namespace hy_wristlog
