#include "engineering/dates.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"

namespace hy_wristlog::engineering {
namespace {

[[noreturn]] void raiseNoDate(std::string_view text) {
  throw Failure(fault::TypeMismatch, "engineering.dateFromText",
                "\"" + std::string(text) +
                    "\" is no date: write yyyy-mm-dd or yyyy-mm-ddThh:mm[:ss], within the years 100 to 9999");
}

}  // namespace

std::string isoDate(double date, std::string_view suffix) {
  try {
    const CivilTime time = civilFromDate(date);
    const auto two = [](std::int32_t n) { return formatNumber(n, "00"); };
    return formatNumber(time.Year, "0000") + "-" + two(time.Month) + "-" + two(time.Day) + "T" +
           two(time.Hour) + ":" + two(time.Minute) + ":" + two(time.Second) + std::string(suffix);
  } catch (const Failure&) {
    return {};
  }
}

double dateFromText(std::string_view text) {
  const std::string_view asked = text;
  text = trimBlanks(text);
  if (text.ends_with('Z')) text.remove_suffix(1);
  const auto field = [&](std::size_t at, std::size_t length, std::int32_t highest) {
    const std::string_view digits = text.substr(std::min(at, text.size()), length);
    if (digits.size() != length || !isDigits(digits) || leadingNumber(digits) > highest) raiseNoDate(asked);
    return roundToInt32(leadingNumber(digits));
  };
  if (text.find('-', 1) == text.npos) {
    if (!isNumeric(text) || isoDate(leadingNumber(text)).empty()) raiseNoDate(asked);
    return leadingNumber(text);
  }
  const auto separatedBy = [&](std::size_t at, std::string_view separators) {
    return text.size() <= at || separators.find(text[at]) != separators.npos;
  };
  const bool lengthFits = text.size() == 10 || text.size() == 16 || text.size() == 19;
  if (!lengthFits || !separatedBy(4, "-") || !separatedBy(7, "-") || !separatedBy(10, "T ") ||
      !separatedBy(13, ":") || !separatedBy(16, ":"))
    raiseNoDate(asked);
  double date = dateSerial(field(0, 4, 9999), field(5, 2, 12), field(8, 2, 31));
  // A day that its month does not have has been carried into the next month.
  if (isoDate(date).substr(0, 10) != text.substr(0, 10)) raiseNoDate(asked);
  if (text.size() > 10)
    date = addTime(date,
                   timeSerial(field(11, 2, 23), field(14, 2, 59), text.size() == 19 ? field(17, 2, 59) : 0));
  return date;
}

}  // namespace hy_wristlog::engineering
