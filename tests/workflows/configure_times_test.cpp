#include <gtest/gtest.h>

#include <cstdio>
#include <optional>

#include "timezones/Class_TimeZoneTools.h"
#include "workflows/configure_times.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

/// 0 for an empty text.
double date(const char* text) {
  CivilTime t;
  if (*text == 0) return 0;
  std::sscanf(text, "%d-%d-%d %d:%d:%d", &t.Year, &t.Month, &t.Day, &t.Hour, &t.Minute, &t.Second);
  return dateFromCivil(t);
}

std::optional<double> given(const char* text) {
  return *text == 0 ? std::nullopt : std::optional(date(text));
}

struct Case {
  std::vector<std::int32_t> Epochs;
  const char *NowUtc, *StartLocal, *EndLocal;
  std::int32_t Code;
  const char *StartUtc = "", *EndUtc = "";
  std::int32_t Offset = -300;
  const char* Zone = "EST";
  bool Daylight = true;
};

const char *const LastMinute = "2038-01-19 03:14", *const Never = "2038-01-19 03:14:07";
const std::vector<std::int32_t> ByMinute{15, 30, 60}, Two{120}, Five{300}, All{15, 30, 60, 120, 300};

// clang-format off
const std::vector<Case> Cases = {
    // As soon as possible, and never ending.
    {ByMinute, "2026-03-02 14:00", "", "", 0, "2026-03-02 14:01", LastMinute},
    {ByMinute, "2026-03-02 14:00:01", "", "", 0, "2026-03-02 14:02", LastMinute},
    {ByMinute, "2026-03-02 14:58:30", "", "", 0, "2026-03-02 15:00", LastMinute},
    {ByMinute, "2026-02-28 23:59:01", "", "", 0, "2026-03-01 00:01", LastMinute},
    {Two, "2026-03-02 14:00", "", "", 0, "2026-03-02 14:02", LastMinute},
    {Two, "2026-03-02 14:01", "", "", 0, "2026-03-02 14:02", LastMinute},
    {Two, "2026-03-02 14:01:01", "", "", 0, "2026-03-02 14:04", LastMinute},
    {Five, "2026-03-02 14:00", "", "", 0, "2026-03-02 14:05", Never},
    {Five, "2026-03-02 14:03:59", "", "", 0, "2026-03-02 14:05", Never},
    {Five, "2026-03-02 14:04:01", "", "", 0, "2026-03-02 14:10", Never},
    // A start that was given.
    {ByMinute, "2026-03-02 14:00", "2026-03-02 09:01:59", "2026-03-02 09:02:59", 0, "2026-03-02 14:01", "2026-03-02 14:02"},
    {All, "2026-03-02 14:00", "2026-03-02 09:00:59", "2026-03-09 00:00", 10007},
    {Two, "2026-03-02 14:00", "2026-03-02 09:03:59", "2026-03-03 00:00", 0, "2026-03-02 14:02", "2026-03-03 05:00"},
    {Two, "2026-03-02 14:00", "2026-03-02 09:01:59", "2026-03-03 00:00", 10007},
    {Five, "2026-03-02 14:00", "2026-03-02 09:09:59", "", 0, "2026-03-02 14:05", Never},
    {Five, "2026-03-02 14:00", "2026-03-02 09:04:59", "", 10007},
    {{15, 30, 60, 120}, "2026-03-02 14:00", "2026-03-02 12:00", "", 10023},
    // The latest start.
    {ByMinute, "2026-03-02 14:00", "2038-01-18 22:13", "2038-01-18 22:14", 0, "2038-01-19 03:13", LastMinute},
    {ByMinute, "2026-03-02 14:00", "2038-01-18 22:14", "", 10007},
    {ByMinute, "2038-01-19 03:13:30", "", "", 0, "2038-01-19 03:13", LastMinute},
    {Two, "2026-03-02 14:00", "2038-01-18 22:12", "2038-01-18 22:14", 10023},
    {Two, "2026-03-02 14:00", "2038-01-18 22:14", "", 10007},
    {Five, "2026-03-02 14:00", "2038-01-18 22:05", "", 10023},
    {Five, "2026-03-02 14:00", "2038-01-18 22:10", "", 10007},
    {Five, "2038-01-19 03:14", "", "", 0, "2038-01-19 03:05", "2038-01-20 04:05"},
    // The earliest end: a minute, four hours or twenty-five hours behind the start. Refused when a start was
    // given, moved otherwise.
    {ByMinute, "2026-03-02 14:00", "2026-03-02 12:00", "2026-03-02 12:00:59", 10023},
    {ByMinute, "2026-03-02 14:00", "", "2026-03-02 08:00", 0, "2026-03-02 14:01", "2026-03-02 14:02"},
    {Two, "2026-03-02 14:00", "2026-03-02 10:00", "2026-03-02 14:01", 0, "2026-03-02 15:00", "2026-03-02 19:00"},
    {Two, "2026-03-02 14:00", "2026-03-02 10:00", "2026-03-02 13:59", 10023},
    {Two, "2026-03-02 14:00", "", "2026-03-02 10:00", 0, "2026-03-02 14:02", "2026-03-02 18:02"},
    {Five, "2026-03-02 14:00", "2026-03-02 10:00", "2026-03-03 11:00", 0, "2026-03-02 15:00", "2026-03-03 16:00"},
    {Five, "2026-03-02 14:00", "2026-03-02 10:00", "2026-03-03 10:59", 10023},
    {Five, "2026-03-02 14:00", "", "2026-03-02 10:00", 0, "2026-03-02 14:05", "2026-03-03 15:05"},
    // The latest end.
    {ByMinute, "2026-03-02 14:00", "", "2038-01-18 22:15", 0, "2026-03-02 14:01", LastMinute},
    {{15, 30, 60, 120}, "2026-03-02 14:00", "2026-03-02 12:00", "2038-01-18 22:16", 10023},
    {Five, "2026-03-02 14:00", "2026-03-02 12:00", "2038-01-18 22:15", 0, "2026-03-02 17:00", "2038-01-19 03:15"},
    {Five, "2026-03-02 14:00", "2026-03-02 12:00", "2038-01-18 22:20", 10023},
    // Zones.
    {All, "2026-03-02 14:00", "2026-07-01 12:00", "2026-12-01 12:00", 0, "2026-07-01 16:00", "2026-12-01 17:00", -240},
    {All, "2026-03-02 14:00", "2026-07-01 12:00", "2026-12-01 12:00", 0, "2026-07-01 17:00", "2026-12-01 17:00", -300, "EST", false},
    {All, "2026-03-02 14:00", "2026-07-01 12:00", "2027-01-01 12:00", 0, "2026-07-01 02:00", "2027-01-01 01:00", 600, "AUE"},
    {All, "2026-03-02 14:00", "2026-03-09 12:00", "2027-07-01 12:00", 0, "2026-03-09 01:00", "2027-07-01 02:00", 660, "AUE"},
    {All, "2026-03-02 14:00", "2026-03-09 12:00", "2027-07-01 12:00", 0, "2026-03-09 06:30", "2027-07-01 06:30", 330, "IND"},
};
// clang-format on

TEST(ConfigureTimes, FitIntoTheGrid) {
  const Workbench world(LggrPntr_KRVivid);
  for (const Case& row : Cases) {
    for (const std::int32_t epoch : row.Epochs) {
      SCOPED_TRACE(std::to_string(&row - Cases.data()) + ", epoch " + std::to_string(epoch));
      const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(row.Zone);
      ASSERT_TRUE(zone);
      RecordingTimes times;
      EXPECT_EQ(fitRecordingTimes({epoch, zone.get(), row.Daylight, date(row.NowUtc), given(row.StartLocal),
                                   given(row.EndLocal)},
                                  times),
                row.Code);
      if (row.Code != 0) continue;
      EXPECT_EQ(secondsBetween(date(row.StartUtc), times.StartUtc), 0);
      EXPECT_EQ(secondsBetween(date(row.EndUtc), times.EndUtc), 0);
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
      ASSERT_EQ(fitRecordingTimes({epoch, zone.get(), false, date("2026-03-01"), wanted, wanted + 2}, asked),
                0);
      ASSERT_EQ(secondsBetween(wanted, asked.StartUtc), 0) << second;
      ASSERT_EQ(secondsBetween(wanted + 2, asked.EndUtc), 0) << second;
      ASSERT_EQ(fitRecordingTimes({epoch, zone.get(), false, wanted - 1 / 1440.0, {}, {}}, soon), 0);
      ASSERT_EQ(secondsBetween(wanted, soon.StartUtc), 0) << second;
    }
  }
}

TEST(ConfigureTimes, ChangesOfTheClockInTheLogger) {
  // clang-format off
  const struct {
    const char *Begins, *Zone;
    bool Daylight;
    const char *Start, *End;
    std::int32_t Bias, DaylightBias;
  } cases[] = {
      {"2026-03-02 14:00", "EST", true, "2026-03-08 07:00", "2026-11-01 06:00", 300, -60},
      {"2026-06-02 14:00", "EST", true, "2027-03-14 07:00", "2026-11-01 06:00", 300, -60},
      {"2026-12-02 14:00", "EST", true, "2027-03-14 07:00", "2027-11-07 06:00", 300, -60},
      {"2026-03-02 14:00", "EST", false, "", "", 300, -60},
      // In the south the end of daylight time is reckoned with the standard offset, an hour late.
      {"2026-03-02 14:00", "AUE", true, "2026-10-03 16:00", "2026-04-04 17:00", -600, -60},
      {"2026-12-02 14:00", "AUE", true, "2027-10-02 16:00", "2027-04-03 17:00", -600, -60},
      {"2026-03-02 14:00", "IND", true, "", "", -330, 0},
  };
  // clang-format on
  const auto seconds = [](const char* text) {
    return *text == 0 ? 0 : secondsBetween(UnixEpochDate, date(text));
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.Zone) + " " + row.Begins);
    BenchOptions options = optionsOf(LggrPntr_KRVivid);
    options.World.Begins =
        std::chrono::sys_time<std::chrono::milliseconds>{std::chrono::seconds{seconds(row.Begins)}};
    Workbench desk(LggrPntr_KRVivid, options);
    ASSERT_EQ(desk.configure({.Zone = row.Zone, .Daylight = row.Daylight}), 0);
    EXPECT_EQ(desk.stored().signedNumber(block::DaylightStart), seconds(row.Start));
    EXPECT_EQ(desk.stored().signedNumber(block::DaylightEnd), seconds(row.End));
    EXPECT_EQ(static_cast<std::int16_t>(desk.stored().number(block::ZoneBias)), row.Bias);
    EXPECT_EQ(static_cast<std::int8_t>(desk.stored().number(block::ZoneDaylightBias)), row.DaylightBias);
    EXPECT_EQ(desk.stored().text(block::ZoneStandardName), row.Zone);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
