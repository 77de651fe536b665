#include "engineering/zone_names.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/dates.h"
#include "platform/platform.h"
#include "start_up/start_up.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog::engineering {
namespace {

/// Clocks are compared in the middle of each month of one year; a rule is the same in every year.
constexpr std::int32_t ComparedYear = 2030, MiddleOfMonth = 15, Months = 12;
constexpr std::size_t MostNearest = 3;

const std::vector<TimeZoneRef>& catalogue() {
  openLibrary();
  TimeZoneTools().fncPopulateTZICollection();
  return TimeZoneTools().Get_TimeZoneArray();
}

/// How many minutes their clocks are apart, summed over the months.
std::int32_t distance(const Class_TimeZoneInfo& a, const Class_TimeZoneInfo& b) {
  constexpr bool Daylight = true;
  std::int32_t minutes = 0;
  for (std::int32_t month = 1; month <= Months; ++month) {
    const double date = dateSerial(ComparedYear, month, MiddleOfMonth);
    minutes += std::abs(Class_TimeZoneTools::fncCalcOffset(date, a, Daylight) -
                        Class_TimeZoneTools::fncCalcOffset(date, b, Daylight));
  }
  return minutes;
}

std::vector<std::string> nearestTo(const platform::ZoneRule& rule) {
  const Class_TimeZoneInfo wanted = Class_TimeZoneTools::fncZoneOfRule(rule);
  std::vector<TimeZoneRef> zones = catalogue();
  std::stable_sort(zones.begin(), zones.end(), [&](const TimeZoneRef& a, const TimeZoneRef& b) {
    return distance(*a, wanted) < distance(*b, wanted);
  });
  std::vector<std::string> words;
  for (std::size_t i = 0; i < std::min(zones.size(), MostNearest); ++i)
    words.push_back(zones[i]->Abbreviation + " " + zones[i]->DisplayName);
  return words;
}

}  // namespace

std::optional<CatalogueFit> catalogueFit(std::string_view name) {
  const auto& zones = catalogue();
  const auto named = platform::current().zones().named(name);
  if (!named) return std::nullopt;
  const auto found = std::find_if(zones.begin(), zones.end(),
                                  [&](const TimeZoneRef& zone) { return zone->KeyName == named->Key; });
  if (named->Key.empty() || found == zones.end()) return CatalogueFit{{}, {}, nearestTo(named->Rule)};
  return CatalogueFit{(*found)->Abbreviation, (*found)->DisplayName, {}};
}

std::string localZoneName() { return platform::current().zones().localName(); }

std::string localZoneTrouble() { return platform::current().zones().trouble(); }

bool isInCatalogue(const std::string& abbreviation) {
  openLibrary();
  return TimeZoneTools().fncGetTZIfromAbbrev(abbreviation) != nullptr;
}

}  // namespace hy_wristlog::engineering
