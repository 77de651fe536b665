#include <gtest/gtest.h>

#include <cstdio>
#include <optional>

#include "timezones/Class_TimeZoneTools.h"
#include "workflows/configure_times.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

/// None for an empty text. "9 14:00" is a time in March 2026.
std::optional<double> given(const std::string& text) {
  const std::string whole = text.find('-') == std::string::npos ? "2026-03-" + text : text;
  CivilTime t;
  std::sscanf(whole.c_str(), "%d-%d-%d %d:%d:%d", &t.Year, &t.Month, &t.Day, &t.Hour, &t.Minute, &t.Second);
  return text.empty() ? std::nullopt : std::optional(dateFromCivil(t));
}
double date(const std::string& text) { return given(text).value_or(0); }

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
const std::vector<std::int32_t> ByMinute{15, 30, 60}, Two{120}, Five{300}, UpToTwo{15, 30, 60, 120},
    All{15, 30, 60, 120, 300};

// clang-format off
const std::vector<Case> Cases = {
    // As soon as possible, and never ending.
    {ByMinute, "2 14:00", "", "", 0, "2 14:01", LastMinute},
    {ByMinute, "2026-02-28 23:59:01", "", "", 0, "1 00:01", LastMinute},
    {Two, "2 14:01", "", "", 0, "2 14:02", LastMinute}, {Two, "2 14:01:01", "", "", 0, "2 14:04", LastMinute},
    {Five, "2 14:04:01", "", "", 0, "2 14:10", Never},
    // A start that was given.
    {ByMinute, "2 14:00", "2 09:01:59", "2 09:02:59", 0, "2 14:01", "2 14:02"},
    {All, "2 14:00", "2 09:00:59", "9 00:00", 10007},
    {Two, "2 14:00", "2 09:03:59", "3 00:00", 0, "2 14:02", "3 05:00"},
    {Two, "2 14:00", "2 09:01:59", "3 00:00", 10007},
    {Five, "2 14:00", "2 09:09:59", "", 0, "2 14:05", Never}, {Five, "2 14:00", "2 09:04:59", "", 10007},
    {UpToTwo, "2 14:00", "2 12:00", "", 10023},
    // The latest start.
    {ByMinute, "2 14:00", "2038-01-18 22:13", "2038-01-18 22:14", 0, "2038-01-19 03:13", LastMinute},
    {ByMinute, "2 14:00", "2038-01-18 22:14", "", 10007},
    {ByMinute, "2038-01-19 03:13:30", "", "", 0, "2038-01-19 03:13", LastMinute},
    {Two, "2 14:00", "2038-01-18 22:12", "2038-01-18 22:14", 10023},
    {Two, "2 14:00", "2038-01-18 22:14", "", 10007}, {Five, "2 14:00", "2038-01-18 22:10", "", 10007},
    {Five, "2038-01-19 03:14", "", "", 0, "2038-01-19 03:05", "2038-01-20 04:05"},
    // The earliest end, a minute, four or twenty-five hours after the start; moved when no start was given.
    {ByMinute, "2 14:00", "2 12:00", "2 12:00:59", 10023},
    {ByMinute, "2 14:00", "", "2 08:00", 0, "2 14:01", "2 14:02"},
    {Two, "2 14:00", "2 10:00", "2 14:01", 0, "2 15:00", "2 19:00"},
    {Two, "2 14:00", "2 10:00", "2 13:59", 10023}, {Two, "2 14:00", "", "2 10:00", 0, "2 14:02", "2 18:02"},
    {Five, "2 14:00", "2 10:00", "3 11:00", 0, "2 15:00", "3 16:00"},
    {Five, "2 14:00", "2 10:00", "3 10:59", 10023}, {Five, "2 14:00", "", "2 10:00", 0, "2 14:05", "3 15:05"},
    // The latest end.
    {ByMinute, "2 14:00", "", "2038-01-18 22:15", 0, "2 14:01", LastMinute},
    {UpToTwo, "2 14:00", "2 12:00", "2038-01-18 22:16", 10023},
    {Five, "2 14:00", "2 12:00", "2038-01-18 22:15", 0, "2 17:00", "2038-01-19 03:15"},
    {Five, "2 14:00", "2 12:00", "2038-01-18 22:20", 10023},
    // Zones.
    {All, "2 14:00", "2026-07-01 12:00", "2026-12-01 12:00", 0, "2026-07-01 16:00", "2026-12-01 17:00", -240},
    {All, "2 14:00", "2026-07-01 12:00", "2026-12-01 12:00", 0, "2026-07-01 17:00", "2026-12-01 17:00", -300,
     "EST", false},
    {All, "2 14:00", "9 12:00", "2027-07-01 12:00", 0, "9 01:00", "2027-07-01 02:00", 660, "AUE"},
};
// clang-format on

TEST(ConfigureTimes, FitIntoTheGrid) {
  const Workbench world(LggrPntr_KRVivid);
  for (const Case& row : Cases)
    for (const std::int32_t epoch : row.Epochs) {
      SCOPED_TRACE(std::to_string(&row - Cases.data()) + ", epoch " + std::to_string(epoch));
      const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(row.Zone);
      const auto start = given(row.StartLocal), end = given(row.EndLocal);
      RecordingTimes times;
      EXPECT_EQ(fitRecordingTimes({epoch, zone.get(), row.Daylight, date(row.NowUtc), start, end}, times),
                row.Code);
      if (row.Code != 0) continue;
      EXPECT_EQ(secondsBetween(date(row.StartUtc), times.StartUtc), 0);
      EXPECT_EQ(secondsBetween(date(row.EndUtc), times.EndUtc), 0);
      EXPECT_EQ(times.OffsetMinutes, row.Offset);
      EXPECT_EQ(secondsBetween(times.StartUtc, times.StartLocal), row.Offset * 60);
    }
}

/// Day counts cannot hold most times of day exactly: none of them may slip into the epoch before or after.
TEST(ConfigureTimes, AMomentOnTheGridStays) {
  const Workbench world(LggrPntr_KRVivid);
  const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev("GMT");
  const auto fit = [&](std::int32_t epoch, double now, std::optional<double> start,
                       std::optional<double> end) {
    RecordingTimes times;
    EXPECT_EQ(fitRecordingTimes({epoch, zone.get(), false, now, start, end}, times), 0);
    return times;
  };
  for (const std::int32_t epoch : {60, 120, 300})
    for (std::int32_t second = 0; second < 3 * 86400; second += epoch) {
      const double wanted = (1772409600 + second) / 86400.0 + 25569;
      const RecordingTimes asked = fit(epoch, date("2026-03-01"), wanted, wanted + 2);
      ASSERT_EQ(secondsBetween(wanted, asked.StartUtc), 0) << second;
      ASSERT_EQ(secondsBetween(wanted + 2, asked.EndUtc), 0) << second;
      ASSERT_EQ(secondsBetween(wanted, fit(epoch, wanted - 1 / 1440.0, {}, {}).StartUtc), 0) << second;
    }
}

TEST(ConfigureTimes, ChangesOfTheClockInTheLogger) {
  const std::tuple<const char*, const char*, bool, const char*, const char*, int> cases[] = {
      {"2026-06-02 14:00", "EST", true, "2027-03-14 07:00", "2026-11-01 06:00", 300},
      {"2026-12-02 14:00", "EST", true, "2027-03-14 07:00", "2027-11-07 06:00", 300},
      {"2026-03-02 14:00", "EST", false, "", "", 300},
      // In the south the end of daylight time is reckoned with the standard offset, an hour late.
      {"2026-12-02 14:00", "AUE", true, "2027-10-02 16:00", "2027-04-03 17:00", -600}};
  const auto seconds = [](const char* text) { return secondsBetween(UnixEpochDate, date(text)); };
  for (const auto& [begins, zone, daylight, start, end, bias] : cases) {
    BenchOptions options = optionsOf(LggrPntr_KRVivid);
    options.World.Begins = decltype(options.World.Begins){std::chrono::seconds{seconds(begins)}};
    Workbench desk(LggrPntr_KRVivid, options);
    ASSERT_EQ(desk.configure({.Zone = zone, .Daylight = daylight}), 0);
    EXPECT_EQ(desk.stored().signedNumber(block::DaylightStart), *start == 0 ? 0 : seconds(start)) << begins;
    EXPECT_EQ(desk.stored().signedNumber(block::DaylightEnd), *end == 0 ? 0 : seconds(end)) << begins;
    EXPECT_EQ(static_cast<std::int16_t>(desk.stored().number(block::ZoneBias)), bias);
    EXPECT_EQ(static_cast<std::int8_t>(desk.stored().number(block::ZoneDaylightBias)), -60);
    EXPECT_EQ(desk.stored().text(block::ZoneStandardName), zone);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
