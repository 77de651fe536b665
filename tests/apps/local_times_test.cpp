#include <gtest/gtest.h>

#include "base/dates.h"
#include "base/inside.h"
#include "engineering/dates.h"
#include "engineering/zones.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

TEST(LocalTimes, OffsetsChangeAtTheMomentTheClocksDo) {
  using Changes = std::vector<std::pair<std::string, std::int32_t>>;
  const std::tuple<std::string, bool, Changes> cases[] = {
      {"Eastern Standard Time", true, {{"2025-03-09T07:00:00", -240}, {"2025-11-02T06:00:00", -300}}},
      {"Eastern Standard Time", false, {}},
      {"US Mountain Standard Time", true, {}},
      {"GMT Standard Time", true, {{"2025-03-30T01:00:00", 60}, {"2025-10-26T01:00:00", 0}}},
      {"AUS Eastern Standard Time", true, {{"2025-04-05T16:00:00", 600}, {"2025-10-04T16:00:00", 660}}}};
  TimeZoneTools().fncPopulateTZICollection();
  for (const auto& [key, adjusts, expected] : cases) {
    SCOPED_TRACE(key);
    Class_VardenLogger logger;
    for (const TimeZoneRef& zone : TimeZoneTools().Get_TimeZoneArray())
      if (zone->KeyName == key) Inside::of(logger).record.TimeZone = zone;
    ASSERT_TRUE(Inside::of(logger).record.TimeZone);
    Inside::of(logger).record.AutoDSTadjust = adjusts;
    const auto periods =
        engineering::offsetPeriods(logger, dateSerial(2025, 1, 15), dateSerial(2025, 12, 15));
    Changes found;
    for (std::size_t i = 1; i < periods.size(); ++i)
      found.emplace_back(engineering::isoDate(periods[i].FromUtc), periods[i].Minutes);
    EXPECT_EQ(found, expected);
    EXPECT_EQ(periods.front().Minutes, expected.empty() ? periods.back().Minutes : found.back().second);
  }
}

}  // namespace
}  // namespace hy_wristlog
