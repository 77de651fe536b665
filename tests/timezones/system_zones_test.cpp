#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <map>

#include "base/dates.h"
#include "platform/zone_catalogue.h"
#include "simulator/simulated_world.h"
#include "support/in_world.h"
#include "support/surroundings.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

constexpr std::time_t Day = 86400;
constexpr std::int32_t FirstYear = 2015, LastYear = 2037;

TimeZoneRef zoneOf(const platform::CatalogueZone& entry) {
  return TimeZoneTools().fncGetTZIfromAbbrev(Class_TimeZoneTools::fncGetAbbrevFromKey(entry.Key));
}

/// The offset that the C library has in the zone of TZ.
long systemOffset(std::time_t utc) {
  std::tm local{};
  ::localtime_r(&utc, &local);
  return local.tm_gmtoff;
}

std::time_t secondsOf(double date) { return secondsBetween(UnixEpochDate, date); }

/// What the library says of a moment: as the C library, but daylight time begins early by the daylight bias,
/// and lasts one second longer when it lies within a year.
long expectedOffset(std::time_t utc, const Class_TimeZoneInfo& zone, bool withinYear) {
  const long standard = -60L * zone.Bias;
  const std::time_t early = -60 * zone.DaylightBias;
  const bool isDaylight = systemOffset(utc) != standard ||
                          (early > 0 && systemOffset(utc + early - 1) != standard) ||
                          (withinYear && systemOffset(utc - 1) != standard);
  return isDaylight ? standard + early : standard;
}

/// Compares noon of every day, and the half hours with the seconds around them where the clocks change.
void compareYear(const Class_TimeZoneInfo& zone, std::int32_t year) {
  const std::time_t from = secondsOf(dateSerial(year, 1, 2)), to = secondsOf(dateSerial(year, 12, 29));
  const bool withinYear = systemOffset(from) == -60L * zone.Bias;
  const auto compare = [&](std::time_t utc) {
    const double date = UnixEpochDate + static_cast<double>(utc) / SecondsPerDay;
    const double local = Class_TimeZoneTools::fncUTCToLocalDate(date, zone, true);
    EXPECT_EQ(secondsOf(local) - utc, expectedOffset(utc, zone, withinYear)) << zone.KeyName << ' ' << utc;
  };
  for (std::time_t day = from; day < to; day += Day) {
    compare(day + Day / 2);
    const double noon = UnixEpochDate + static_cast<double>(day + Day / 2) / SecondsPerDay;
    const std::int16_t offset = Class_TimeZoneTools::fncCalcOffset(noon, zone, true);
    EXPECT_EQ(offset * 60, systemOffset(day + Day / 2 - offset * 60)) << zone.KeyName << ' ' << day;
    if (systemOffset(day) == systemOffset(day + Day)) continue;
    for (std::time_t halfHour = day - Day / 8; halfHour <= day + Day / 8 * 9; halfHour += 1800)
      for (const int second : {-1, 0, 1}) compare(halfHour + second);
  }
}

/// The years, as "2015-2018 2022", in which the database had another offset than the library at some noon.
std::string yearsThatDiffer(const Class_TimeZoneInfo& zone) {
  std::vector<std::pair<std::int32_t, std::int32_t>> spans;
  for (std::time_t noon = secondsOf(dateSerial(FirstYear, 1, 1)) + Day / 2;
       noon < secondsOf(dateSerial(LastYear + 1, 1, 1)); noon += Day) {
    const double utc = UnixEpochDate + static_cast<double>(noon) / SecondsPerDay;
    if (secondsBetween(utc, Class_TimeZoneTools::fncUTCToLocalDate(utc, zone, true)) == systemOffset(noon))
      continue;
    const std::int32_t year = civilFromDate(utc).Year;
    if (spans.empty() || spans.back().second < year - 1) spans.emplace_back(year, year);
    spans.back().second = year;
  }
  std::string words;
  for (const auto& [from, to] : spans)
    words += (words.empty() ? "" : " ") + std::to_string(from) + (from < to ? "-" + std::to_string(to) : "");
  return words;
}

/// The C library reads the rule by itself, so that parser, record and conversion are held against another
/// reader. The world's year runs the other way: it must make no difference.
TEST(SystemZones, KeepTheDatabasesRuleInEveryYear) {
  int withDaylight = 0;
  for (std::int32_t year = FirstYear; year <= LastYear; ++year) {
    simulator::WorldOptions options;
    options.Begins = std::chrono::sys_days{std::chrono::year{FirstYear + LastYear - year} / 7 / 1};
    const InWorld<simulator::SimulatedWorld> world{options};
    for (const platform::CatalogueZone& entry : platform::zoneCatalogue()) {
      const TimeZoneRef zone = zoneOf(entry);
      EXPECT_TRUE(zone->KeyName == entry.Key && zone->DaylightBias <= 0) << entry.Key;
      EXPECT_EQ(zone->DaylightDate.wYear + zone->StandardDate.wYear, 0) << entry.Key;
      const std::string file = contentOf("/usr/share/zoneinfo/" + std::string{entry.TzName});
      const auto rule = file.rfind('\n', file.size() - 2) + 1;
      const Variable system{"TZ", file.substr(rule, file.size() - 1 - rule)};
      compareYear(*zone, year);
      if (zone->DaylightBias != 0) ++withDaylight;
    }
    const auto& zones = TimeZoneTools().Get_TimeZoneArray();
    EXPECT_EQ(zones.size(), 85U);
    EXPECT_TRUE(std::is_sorted(zones.begin(), zones.end(),
                               [](const auto& a, const auto& b) { return a->Bias > b->Bias; }));
  }
  EXPECT_GT(withDaylight, 500);
}

/// What one rule for all years cannot give, as docs/zones.md tells. A zone whose rule is younger than the
/// table is passed over: it differs from the years before, and nobody could have listed it.
TEST(SystemZones, DifferFromTheDatabaseInTheYearsThatAreDocumented) {
  constexpr std::int32_t TableMade = 2025;
  const std::map<std::string, std::string> documented = {
      {"AZT", "2015"},      {"CBT", "2015-2019"}, {"CMT", "2015-2022"}, {"EGY", "2015-2022"},
      {"ESA", "2015-2019"}, {"FIJ", "2015-2021"}, {"GRE", "2015-2023"}, {"IRA", "2015-2022"},
      {"JST", "2015-2022"}, {"MEX", "2015-2022"}, {"MMT", "2015-2022"}, {"MON", "2015"},
      {"MXT", "2015-2022"}, {"NCA", "2015-2016"}, {"NST", "2015-2017"}, {"PSA", "2015-2018 2022"},
      {"SAM", "2015-2021"}, {"TON", "2016-2017"}};
  const InWorld<simulator::SimulatedWorld> world;
  int compared = 0;
  for (const platform::CatalogueZone& entry : platform::zoneCatalogue()) {
    const TimeZoneRef zone = zoneOf(entry);
    const Variable system{"TZ", std::string{entry.TzName}};
    const std::string years = yearsThatDiffer(*zone);
    if (!years.empty() && std::stoi(years.substr(years.size() - 4)) >= TableMade) continue;
    const auto row = documented.find(zone->Abbreviation);
    EXPECT_EQ(years, row == documented.end() ? "" : row->second) << zone->Abbreviation;
    ++compared;
  }
  EXPECT_GT(compared, 60);
}

}  // namespace
}  // namespace hy_wristlog
