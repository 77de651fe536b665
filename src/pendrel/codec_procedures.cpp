#include "base/dates.h"
#include "errors/Procedure.h"
#include "pendrel/Pendrel.h"
#include "pendrel/subject_text.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_Pendrel";

}  // namespace

void Pendrel::subEncodeSubjectInfo() {
  Procedure procedure{Module, "subEncodeSubjectInfo"};
  procedure.run([&] { encodeSubjectText(record); });
}

void Pendrel::subDecodeSubjectInfo() {
  Procedure procedure{Module, "subDecodeSubjectInfo"};
  procedure.run([&] { decodeSubjectText(record); });
}

std::int32_t Pendrel::fncDateToLoggerSeconds(double date) {
  Procedure procedure{Module, "fncDateToLoggerSeconds"};
  return procedure.run([&] {
    if (date < EarliestSecondsDate)
      throw Failure(10103, "Class_Pendrel.fncDateToLoggerSeconds", "Date is before 12/13/1901 8:45:52 PM");
    return unixSecondsFromDate(date);
  });
}

double Pendrel::fncLoggerSecondsToDate(std::int32_t seconds) { return dateFromUnixSeconds(seconds); }

}  // namespace hy_wristlog
