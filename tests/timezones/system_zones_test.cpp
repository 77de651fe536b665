#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "base/dates.h"
#include "platform/zone_catalogue.h"
#include "simulator/simulated_world.h"
#include "support/in_world.h"
#include "support/surroundings.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

constexpr std::time_t Day = 86400;

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

TEST(SystemZones, AgreeWithTheCLibrary) {
  int withDaylight = 0;
  const std::int32_t now = platform::current().clock().utc().Year;
  // From 2038 on every database describes the years by its rules alone.
  for (const std::int32_t year : {now, now + 1, now + 2, 2040, 2041}) {
    simulator::WorldOptions options;
    options.Begins = std::chrono::sys_days{std::chrono::year{year} / 7 / 1};
    const InWorld<simulator::SimulatedWorld> world{options};
    for (const platform::CatalogueZone& entry : platform::zoneCatalogue()) {
      const auto zone =
          TimeZoneTools().fncGetTZIfromAbbrev(Class_TimeZoneTools::fncGetAbbrevFromKey(entry.Key));
      ASSERT_NE(zone, nullptr) << entry.Key;
      EXPECT_EQ(zone->KeyName, entry.Key);
      EXPECT_LE(zone->DaylightBias, 0) << entry.Key;
      for (const CLass_SystemTime& change : {zone->DaylightDate, zone->StandardDate})
        EXPECT_TRUE(change.wYear == 0 || change.wYear == year) << entry.Key;
      const Variable system{"TZ", std::string{entry.TzName}};
      compareYear(*zone, year);
      if (zone->DaylightBias != 0) ++withDaylight;
    }
    const auto& zones = TimeZoneTools().Get_TimeZoneArray();
    EXPECT_EQ(zones.size(), 85U);
    EXPECT_TRUE(std::is_sorted(zones.begin(), zones.end(),
                               [](const auto& a, const auto& b) { return a->Bias > b->Bias; }));
  }
  EXPECT_GT(withDaylight, 100);
}

}  // namespace
}  // namespace hy_wristlog
