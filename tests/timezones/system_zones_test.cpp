#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cmath>

#include "base/dates.h"
#include "fake_world.h"
#include "platform/zone_catalogue.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

constexpr time_t Day = 86400;

/// The C library in a zone of the tz database.
class SystemZone {
 public:
  explicit SystemZone(const std::string& name) {
    if (const char* former = getenv("TZ")) former_ = former;
    setenv("TZ", name.c_str(), 1);
    tzset();
  }
  SystemZone(const SystemZone&) = delete;
  SystemZone& operator=(const SystemZone&) = delete;
  ~SystemZone() {
    if (former_)
      setenv("TZ", former_->c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }

  static long offset(time_t utc) {
    tm local{};
    localtime_r(&utc, &local);
    return local.tm_gmtoff;
  }

  /// The first moment in a span whose offset differs from the one before it; `to` when there is none.
  static time_t firstChange(time_t from, time_t to) {
    const long before = offset(from);
    time_t day = from;
    while (day < to && offset(std::min(day + Day, to)) == before) day += Day;
    if (day >= to) return to;
    time_t low = day, high = std::min(day + Day, to);
    while (high - low > 1) {
      const time_t middle = low + (high - low) / 2;
      (offset(middle) == before ? low : high) = middle;
    }
    return high;
  }

 private:
  std::optional<std::string> former_;
};

double dateOf(time_t seconds) { return UnixEpochDate + static_cast<double>(seconds) / SecondsPerDay; }
time_t secondsOf(double date) { return secondsBetween(UnixEpochDate, date); }

/// What the library says of a moment: as the C library, but daylight time begins early by the daylight bias,
/// and lasts one second longer when it lies within a year.
long expectedOffset(time_t utc, const Class_TimeZoneInfo& zone, bool withinYear) {
  const long standard = -60L * zone.Bias;
  const long daylight = standard - 60L * zone.DaylightBias;
  const time_t early = -60 * zone.DaylightBias;
  const bool isDaylight = SystemZone::offset(utc) != standard ||
                          (early > 0 && SystemZone::offset(utc + early - 1) != standard) ||
                          (withinYear && SystemZone::offset(utc - 1) != standard);
  return isDaylight ? daylight : standard;
}

void compareYear(const Class_TimeZoneInfo& zone, std::int32_t year) {
  const time_t from = secondsOf(dateSerial(year, 1, 2)), to = secondsOf(dateSerial(year, 12, 30));
  const bool withinYear = SystemZone::offset(from) == -60L * zone.Bias;
  std::vector<time_t> moments;
  for (time_t day = from; day < to; day += 7 * Day) moments.push_back(day);
  for (time_t change = SystemZone::firstChange(from, to); change < to;
       change = SystemZone::firstChange(change, to))
    for (int hour = -6; hour <= 6; ++hour)
      for (int second = -1; second <= 1; ++second) moments.push_back(change + hour * 1800 + second);
  for (const time_t utc : moments) {
    const double local = Class_TimeZoneTools::fncUTCToLocalDate(dateOf(utc), zone, true);
    ASSERT_EQ(secondsOf(local) - utc, expectedOffset(utc, zone, withinYear)) << zone.KeyName << " " << utc;
  }
}

TEST(SystemZones, AgreeWithTheCLibrary) {
  int withDaylight = 0;
  // Years that every database describes by its rules alone.
  for (const std::int32_t year : {2040, 2041, 2043}) {
    platform::UseFakeWorld world;
    world->MachineZones = true;
    world->Utc.Year = year;
    for (const platform::CatalogueZone& entry : platform::zoneCatalogue()) {
      const auto zone =
          TimeZoneTools().fncGetTZIfromAbbrev(Class_TimeZoneTools::fncGetAbbrevFromKey(entry.Key));
      ASSERT_NE(zone, nullptr) << entry.Key;
      EXPECT_EQ(zone->KeyName, entry.Key);
      const SystemZone system{std::string{entry.TzName}};
      compareYear(*zone, year);
      if (zone->DaylightBias != 0) ++withDaylight;
    }
  }
  EXPECT_GT(withDaylight, 60);
}

TEST(SystemZones, StandInTheOrderOfTheirOffsets) {
  platform::UseFakeWorld world;
  world->MachineZones = true;
  TimeZoneTools().fncPopulateTZICollection();
  const auto& zones = TimeZoneTools().Get_TimeZoneArray();
  ASSERT_EQ(zones.size(), 85U);
  EXPECT_TRUE(std::is_sorted(zones.begin(), zones.end(),
                             [](const auto& a, const auto& b) { return a->Bias > b->Bias; }));
}

TEST(SystemZones, TheMachinesOwnIsFound) {
  const std::pair<const char*, const char*> Cases[] = {
      {"America/New_York", "EST"}, {"Asia/Kolkata", "IND"}, {"UTC", "GWI"}, {"Pacific/Auckland", "NEW"}};
  for (const auto& [name, abbreviation] : Cases) {
    platform::UseFakeWorld world;
    world->MachineZones = true;
    const SystemZone system{name};
    EXPECT_EQ(TimeZoneTools().fncLocalTimeZoneName().Abbreviation, abbreviation);
  }
}

}  // namespace
}  // namespace hy_wristlog
