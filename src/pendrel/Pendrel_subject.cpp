#include "base/dates.h"
#include "errors/Procedure.h"
#include "pendrel/Pendrel.h"
#include "pendrel/subject_text.h"
#include "tools/logger_seconds.h"

namespace hy_wristlog {

void Pendrel::subEncodeSubjectInfo() {
  Procedure procedure{Module, "subEncodeSubjectInfo"};
  procedure.run([&] { encodeSubjectText(record); });
}

void Pendrel::subDecodeSubjectInfo() {
  Procedure procedure{Module, "subDecodeSubjectInfo"};
  procedure.run([&] { decodeSubjectText(record); });
}

std::int32_t Pendrel::fncDateToLoggerSeconds(double date) {
  return loggerSecondsFromDate(date, Module, FailureNumber::PendrelOutOfRange);
}

double Pendrel::fncLoggerSecondsToDate(std::int32_t seconds) { return dateFromUnixSeconds(seconds); }

}  // namespace hy_wristlog
