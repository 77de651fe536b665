#include <gtest/gtest.h>

#include "timezones/Class_TimeZoneTools.h"
#include "workflows/configure_times.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

struct Moment {
  std::int32_t Year, Month, Day, Hour = 0, Minute = 0, Second = 0;
  double date() const { return dateFromCivil({Year, Month, Day, Hour, Minute, Second}); }
};

std::optional<double> dateOf(const std::optional<Moment>& moment) {
  return moment ? std::optional(moment->date()) : std::nullopt;
}

std::string shown(double date) {
  const CivilTime t = civilFromDate(date);
  char text[40];
  std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d", t.Year, t.Month, t.Day, t.Hour, t.Minute,
                t.Second);
  return text;
}

struct Case {
  std::vector<std::int32_t> Epochs;
  Moment Now;  ///< UTC
  std::optional<Moment> Start, End;
  std::int32_t Code;
  Moment StartUtc, EndUtc;  ///< wanted, when the code is 0
  std::int32_t Offset = -300;
  const char* Zone = "EST";
  bool Daylight = true;
};

const Moment Two{2026, 3, 2, 14}, LastMinute{2038, 1, 19, 3, 14}, Never{2038, 1, 19, 3, 14, 7};
const std::vector<std::int32_t> ByMinute{15, 30, 60}, Two120{120}, Five{300}, All{15, 30, 60, 120, 300};

const std::vector<Case> Cases = {
    // As soon as possible, and never ending.
    {ByMinute, Two, {}, {}, 0, {2026, 3, 2, 14, 1}, LastMinute},
    {ByMinute, {2026, 3, 2, 14, 0, 1}, {}, {}, 0, {2026, 3, 2, 14, 2}, LastMinute},
    {ByMinute, {2026, 3, 2, 14, 58, 30}, {}, {}, 0, {2026, 3, 2, 15, 0}, LastMinute},
    {ByMinute, {2026, 2, 28, 23, 59, 1}, {}, {}, 0, {2026, 3, 1, 0, 1}, LastMinute},
    {Two120, Two, {}, {}, 0, {2026, 3, 2, 14, 2}, LastMinute},
    {Two120, {2026, 3, 2, 14, 1}, {}, {}, 0, {2026, 3, 2, 14, 2}, LastMinute},
    {Two120, {2026, 3, 2, 14, 1, 1}, {}, {}, 0, {2026, 3, 2, 14, 4}, LastMinute},
    {Five, Two, {}, {}, 0, {2026, 3, 2, 14, 5}, Never},
    {Five, {2026, 3, 2, 14, 3, 59}, {}, {}, 0, {2026, 3, 2, 14, 5}, Never},
    {Five, {2026, 3, 2, 14, 4, 1}, {}, {}, 0, {2026, 3, 2, 14, 10}, Never},
    // A start that was given.
    {ByMinute,
     Two,
     Moment{2026, 3, 2, 9, 1, 59},
     Moment{2026, 3, 2, 9, 2, 59},
     0,
     {2026, 3, 2, 14, 1},
     {2026, 3, 2, 14, 2}},
    {All, Two, Moment{2026, 3, 2, 9, 0, 59}, Moment{2026, 3, 9}, 10007, {}, {}},
    {Two120, Two, Moment{2026, 3, 2, 9, 3, 59}, Moment{2026, 3, 3}, 0, {2026, 3, 2, 14, 2}, {2026, 3, 3, 5}},
    {Two120, Two, Moment{2026, 3, 2, 9, 1, 59}, Moment{2026, 3, 3}, 10007, {}, {}},
    {Five, Two, Moment{2026, 3, 2, 9, 9, 59}, {}, 0, {2026, 3, 2, 14, 5}, Never},
    {Five, Two, Moment{2026, 3, 2, 9, 4, 59}, {}, 10007, {}, {}},
    {{15, 30, 60, 120}, Two, Moment{2026, 3, 2, 12}, {}, 10023, {}, {}},
    // The latest start.
    {ByMinute,
     Two,
     Moment{2038, 1, 18, 22, 13},
     Moment{2038, 1, 18, 22, 14},
     0,
     {2038, 1, 19, 3, 13},
     LastMinute},
    {ByMinute, Two, Moment{2038, 1, 18, 22, 14}, {}, 10007, {}, {}},
    {ByMinute, {2038, 1, 19, 3, 13, 30}, {}, {}, 0, {2038, 1, 19, 3, 13}, LastMinute},
    {Two120, Two, Moment{2038, 1, 18, 22, 12}, Moment{2038, 1, 18, 22, 14}, 10023, {}, {}},
    {Two120, Two, Moment{2038, 1, 18, 22, 14}, {}, 10007, {}, {}},
    {Five, Two, Moment{2038, 1, 18, 22, 5}, {}, 10023, {}, {}},
    {Five, Two, Moment{2038, 1, 18, 22, 10}, {}, 10007, {}, {}},
    {Five, {2038, 1, 19, 3, 14}, {}, {}, 0, {2038, 1, 19, 3, 5}, {2038, 1, 20, 4, 5}},
    // The earliest end: a minute, four hours or twenty-five hours behind the start. Refused when a start was
    // given, moved otherwise.
    {ByMinute, Two, Moment{2026, 3, 2, 12}, Moment{2026, 3, 2, 12, 0, 59}, 10023, {}, {}},
    {ByMinute, Two, {}, Moment{2026, 3, 2, 8}, 0, {2026, 3, 2, 14, 1}, {2026, 3, 2, 14, 2}},
    {Two120, Two, Moment{2026, 3, 2, 10}, Moment{2026, 3, 2, 14, 1}, 0, {2026, 3, 2, 15}, {2026, 3, 2, 19}},
    {Two120, Two, Moment{2026, 3, 2, 10}, Moment{2026, 3, 2, 13, 59}, 10023, {}, {}},
    {Two120, Two, {}, Moment{2026, 3, 2, 10}, 0, {2026, 3, 2, 14, 2}, {2026, 3, 2, 18, 2}},
    {Five, Two, Moment{2026, 3, 2, 10}, Moment{2026, 3, 3, 11}, 0, {2026, 3, 2, 15}, {2026, 3, 3, 16}},
    {Five, Two, Moment{2026, 3, 2, 10}, Moment{2026, 3, 3, 10, 59}, 10023, {}, {}},
    {Five, Two, {}, Moment{2026, 3, 2, 10}, 0, {2026, 3, 2, 14, 5}, {2026, 3, 3, 15, 5}},
    // The latest end.
    {ByMinute, Two, {}, Moment{2038, 1, 18, 22, 15}, 0, {2026, 3, 2, 14, 1}, LastMinute},
    {{15, 30, 60, 120}, Two, Moment{2026, 3, 2, 12}, Moment{2038, 1, 18, 22, 16}, 10023, {}, {}},
    {Five,
     Two,
     Moment{2026, 3, 2, 12},
     Moment{2038, 1, 18, 22, 15},
     0,
     {2026, 3, 2, 17},
     {2038, 1, 19, 3, 15}},
    {Five, Two, Moment{2026, 3, 2, 12}, Moment{2038, 1, 18, 22, 20}, 10023, {}, {}},
    // Zones.
    {All, Two, Moment{2026, 7, 1, 12}, Moment{2026, 12, 1, 12}, 0, {2026, 7, 1, 16}, {2026, 12, 1, 17}, -240},
    {All,
     Two,
     Moment{2026, 7, 1, 12},
     Moment{2026, 12, 1, 12},
     0,
     {2026, 7, 1, 17},
     {2026, 12, 1, 17},
     -300,
     "EST",
     false},
    {All,
     Two,
     Moment{2026, 7, 1, 12},
     Moment{2027, 1, 1, 12},
     0,
     {2026, 7, 1, 2},
     {2027, 1, 1, 1},
     600,
     "AUE"},
    {All,
     Two,
     Moment{2026, 3, 9, 12},
     Moment{2027, 7, 1, 12},
     0,
     {2026, 3, 9, 1},
     {2027, 7, 1, 2},
     660,
     "AUE"},
    {All,
     Two,
     Moment{2026, 3, 9, 12},
     Moment{2027, 7, 1, 12},
     0,
     {2026, 3, 9, 6, 30},
     {2027, 7, 1, 6, 30},
     330,
     "IND"},
};

TEST(ConfigureTimes, FitIntoTheGrid) {
  const Workbench world(LggrPntr_KRVivid);
  for (const Case& row : Cases) {
    for (const std::int32_t epoch : row.Epochs) {
      SCOPED_TRACE(std::to_string(&row - Cases.data()) + ", epoch " + std::to_string(epoch));
      const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(row.Zone);
      ASSERT_TRUE(zone);
      RecordingTimes times;
      EXPECT_EQ(
          fitRecordingTimes(
              {epoch, zone.get(), row.Daylight, row.Now.date(), dateOf(row.Start), dateOf(row.End)}, times),
          row.Code);
      if (row.Code != 0) continue;
      EXPECT_EQ(shown(times.StartUtc), shown(row.StartUtc.date()));
      EXPECT_EQ(shown(times.EndUtc), shown(row.EndUtc.date()));
      EXPECT_EQ(times.OffsetMinutes, row.Offset);
      EXPECT_EQ(secondsBetween(times.StartUtc, times.StartLocal), row.Offset * 60);
    }
  }
}

/// Day counts cannot hold most times of day exactly: none of them may slip into the epoch before or behind.
TEST(ConfigureTimes, AMomentOnTheGridStays) {
  const Workbench world(LggrPntr_KRVivid);
  const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev("GMT");
  ASSERT_TRUE(zone);
  for (const std::int32_t epoch : {60, 120, 300}) {
    for (std::int32_t second = 0; second < 3 * 86400; second += epoch) {
      const double wanted = (1772409600 + second) / 86400.0 + 25569;
      RecordingTimes asked, soon;
      ASSERT_EQ(
          fitRecordingTimes({epoch, zone.get(), false, Moment{2026, 3, 1}.date(), wanted, wanted + 2}, asked),
          0);
      ASSERT_EQ(secondsBetween(wanted, asked.StartUtc), 0) << shown(wanted);
      ASSERT_EQ(secondsBetween(wanted + 2, asked.EndUtc), 0) << shown(wanted);
      ASSERT_EQ(fitRecordingTimes({epoch, zone.get(), false, wanted - 1 / 1440.0, {}, {}}, soon), 0);
      ASSERT_EQ(secondsBetween(wanted, soon.StartUtc), 0) << shown(wanted);
    }
  }
}

TEST(ConfigureTimes, ChangesOfTheClockInTheLogger) {
  const struct {
    Moment Begins;
    const char* Zone;
    bool Daylight;
    std::optional<Moment> Start, End;
    std::int32_t Bias, DaylightBias;
  } cases[] = {
      {{2026, 3, 2, 14}, "EST", true, Moment{2026, 3, 8, 7}, Moment{2026, 11, 1, 6}, 300, -60},
      {{2026, 6, 2, 14}, "EST", true, Moment{2027, 3, 14, 7}, Moment{2026, 11, 1, 6}, 300, -60},
      {{2026, 12, 2, 14}, "EST", true, Moment{2027, 3, 14, 7}, Moment{2027, 11, 7, 6}, 300, -60},
      {{2026, 3, 2, 14}, "EST", false, {}, {}, 300, -60},
      // In the south the end of daylight time is reckoned with the standard offset, an hour late.
      {{2026, 3, 2, 14}, "AUE", true, Moment{2026, 10, 3, 16}, Moment{2026, 4, 4, 17}, -600, -60},
      {{2026, 12, 2, 14}, "AUE", true, Moment{2027, 10, 2, 16}, Moment{2027, 4, 3, 17}, -600, -60},
      {{2026, 3, 2, 14}, "IND", true, {}, {}, -330, 0},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.Zone) + " " + shown(row.Begins.date()));
    BenchOptions options = optionsOf(LggrPntr_KRVivid);
    options.World.Begins = std::chrono::sys_time<std::chrono::milliseconds>{
        std::chrono::milliseconds{1000 * secondsBetween(UnixEpochDate, row.Begins.date())}};
    Workbench desk(LggrPntr_KRVivid, options);
    ConfigureArguments with{.Zone = row.Zone, .Daylight = row.Daylight};
    ASSERT_EQ(desk.configure(with), 0);
    const auto seconds = [](const std::optional<Moment>& moment) {
      return moment ? secondsBetween(UnixEpochDate, moment->date()) : 0;
    };
    EXPECT_EQ(desk.stored().signedNumber(block::DaylightStart), seconds(row.Start));
    EXPECT_EQ(desk.stored().signedNumber(block::DaylightEnd), seconds(row.End));
    EXPECT_EQ(static_cast<std::int16_t>(desk.stored().number(block::ZoneBias)), row.Bias);
    EXPECT_EQ(static_cast<std::int8_t>(desk.stored().number(block::ZoneDaylightBias)), row.DaylightBias);
    EXPECT_EQ(desk.stored().text(block::ZoneStandardName), row.Zone);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
