#include <gtest/gtest.h>

#include <cstdio>

#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "simulator/simulated_world.h"
#include "support/failures.h"
#include "support/in_world.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

using Tools = Class_TimeZoneTools;

/// "2026-03-08 02:00:00"
double at(const char* text) {
  CivilTime t;
  std::sscanf(text, "%d-%d-%d %d:%d:%d", &t.Year, &t.Month, &t.Day, &t.Hour, &t.Minute, &t.Second);
  return dateFromCivil(t);
}

std::string textOfDate(double date) { return formatDate(date, "yyyy-mm-dd hh:nn:ss"); }

Class_TimeZoneInfo zone(std::int32_t bias, std::int32_t daylightBias = 0, CLass_SystemTime daylight = {},
                        CLass_SystemTime standard = {}) {
  return {bias, 17, daylightBias, standard, daylight, {}, {}, {}, {}, {}, {}};
}

Class_TimeZoneInfo newYork() { return zone(300, -60, {0, 3, 0, 2, 2}, {0, 11, 0, 1, 2}); }
Class_TimeZoneInfo sydney() { return zone(-600, -60, {0, 10, 0, 1, 2}, {0, 4, 0, 1, 3}); }
/// 28 March at 22:00 and 24 October at 23:30:15, every year.
Class_TimeZoneInfo fixedDates() {
  return zone(-120, -60, {2026, 3, 4, 28, 22}, {2026, 10, 4, 24, 23, 30, 15});
}

TEST(IsDayLight, AtTheChanges) {
  const std::tuple<Class_TimeZoneInfo, const char*, bool> cases[] = {
      {newYork(), "2026-03-08 02:00:00", false},       {newYork(), "2026-03-08 02:00:01", true},
      {newYork(), "2026-11-01 02:00:00", true},        {newYork(), "2026-11-01 02:00:01", false},
      {sydney(), "2026-10-04 02:00:00", false},        {sydney(), "2026-10-04 02:00:01", true},
      {sydney(), "2026-04-05 02:59:59", true},         {sydney(), "2026-04-05 03:00:00", false},
      {sydney(), "2026-01-01 00:00:00", true},         {sydney(), "2026-12-31 23:59:59", true},
      {fixedDates(), "2031-03-28 22:00:00", false},    {fixedDates(), "2031-03-28 22:00:01", true},
      {fixedDates(), "2031-10-24 23:30:15", true},     {fixedDates(), "2031-10-24 23:30:16", false},
      {zone(-330, -60), "2026-07-01 12:00:00", false}, {zone(-330, -60), "0100-01-01 00:00:00", false},
  };
  for (const auto& [where, date, daylight] : cases)
    EXPECT_EQ(Tools::fncIsDayLight(at(date), where), daylight) << date;
}

TEST(UTCToLocalDate, LooksAtTheClockAsItWouldReadInDaylightTime) {
  // clang-format off
  const std::tuple<Class_TimeZoneInfo, const char*, bool, const char*> cases[] = {
      {newYork(), "2026-03-08 06:00:00", true, "2026-03-08 01:00:00"},
      {newYork(), "2026-03-08 06:00:01", true, "2026-03-08 02:00:01"},
      {newYork(), "2026-11-01 06:00:00", true, "2026-11-01 02:00:00"},
      {newYork(), "2026-11-01 06:00:01", true, "2026-11-01 01:00:01"},
      {newYork(), "2026-07-01 02:30:30", true, "2026-06-30 22:30:30"},
      {newYork(), "2026-07-01 02:30:30", false, "2026-06-30 21:30:30"},
      {sydney(), "2026-04-04 15:59:59", true, "2026-04-05 02:59:59"},
      {sydney(), "2026-04-04 16:00:00", true, "2026-04-05 02:00:00"},
      {zone(-345, -60), "2026-07-01 20:00:00", true, "2026-07-02 01:45:00"},
      {zone(1500), "2026-03-01 00:59:00", false, "2026-02-27 23:59:00"}};
  // clang-format on
  for (const auto& [where, utc, daylight, local] : cases)
    EXPECT_EQ(textOfDate(Tools::fncUTCToLocalDate(at(utc), where, daylight)), local) << utc;
}

TEST(WeekDayToDate, CountsAndStopsAtTheEndOfTheMonth) {
  const std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t, const char*> cases[] = {
      {2026, 11, 0, 1, "2026-11-01"}, {2026, 2, 0, 4, "2026-02-22"}, {2026, 2, 0, 5, "2026-02-22"},
      {2026, 3, 0, 5, "2026-03-29"},  {2024, 2, 4, 5, "2024-02-29"}, {2026, 12, 4, 5, "2026-12-31"},
      {2026, 12, 6, 9, "2026-12-26"}, {2026, 6, 2, 0, "2026-06-30"}, {2026, 0, 0, 1, "1899-12-30"},
      {2026, 5, 7, 1, "1899-12-30"},
  };
  for (const auto& [year, month, weekday, occurrence, day] : cases)
    EXPECT_EQ(formatDate(Tools::fncWeekDayToDate(year, month, weekday, occurrence), "yyyy-mm-dd"), day);
}

TEST(Changes, InUtc) {
  const std::tuple<Class_TimeZoneInfo, std::int32_t, const char*, const char*> cases[] = {
      {newYork(), 2026, "2026-03-08 07:00:00", "2026-11-01 06:00:00"},
      // The true end is 16:00; the change back of a southern zone is taken as a standard time.
      {sydney(), 2026, "2026-10-03 16:00:00", "2026-04-04 17:00:00"},
      {zone(-120, -60, {0, 4, 5, 5, 0}, {0, 10, 4, 5, 24}), 2026, "2026-04-23 22:00:00",
       "2026-10-29 21:00:00"},
      {zone(-120, -60, {0, 3, 4, 4, 26}, {0, 10, 0, 5, 2}), 2024, "2024-03-29 00:00:00",
       "2024-10-26 23:00:00"},
      {zone(120, -60, {0, 3, 0, 5, -1}, {0, 10, 0, 5}), 2029, "2029-03-25 01:00:00", "2029-10-28 01:00:00"},
      {fixedDates(), 2030, "2030-03-28 20:00:00", "2030-10-24 20:30:00"},
      {zone(0), 2026, "1899-12-30 00:00:00", "1899-12-30 00:00:00"},
      {zone(-330), 2026, "1899-12-30 05:30:00", "1899-12-30 05:30:00"},
  };
  for (const auto& [where, year, daylightStart, standardStart] : cases) {
    EXPECT_EQ(textOfDate(Tools::fncGetDaylightStart(year, where)), daylightStart);
    EXPECT_EQ(textOfDate(Tools::fncGetStandardStart(year, where)), standardStart);
  }
}

TEST(CalcOffset, HasTheSignOfTheClock) {
  EXPECT_EQ(Tools::fncCalcOffset(at("2026-01-15 12:00:00"), newYork(), true), -300);
  EXPECT_EQ(Tools::fncCalcOffset(at("2026-07-15 12:00:00"), newYork(), true), -240);
  EXPECT_EQ(Tools::fncCalcOffset(at("2026-07-15 12:00:00"), newYork(), false), -300);
  EXPECT_EQ(numberOf([] { Tools::fncCalcOffset(46000, zone(INT32_MIN), false); }), fault::Overflow);
  EXPECT_EQ(numberOf([] { Tools::fncUTCToLocalDate(46000, zone(INT32_MAX, INT32_MAX), true); }),
            fault::Overflow);
  EXPECT_EQ(numberOf([] { Tools::fncUTCToLocalDate(2958466, zone(-600), true); }), fault::InvalidCall);
}

TEST(Offsets, AsTextAndBack) {
  const std::pair<int, const char*> Texts[] = {{0, "+00:00"},    {330, "+05:30"},   {-1, "-00:01"},
                                               {1440, "+00:00"}, {-1500, "-01:00"}, {-32768, "-18:08"}};
  for (const auto& [minutes, text] : Texts)
    EXPECT_EQ(Tools::fncFormatOffset(static_cast<std::int16_t>(minutes)), text);

  const std::pair<const char*, int> Minutes[] = {
      {"0", 0},       {"5:30", 330},  {"05:30", 330}, {" 5:30 ", 330}, {"-5:00", -300}, {"-5:30", -270},
      {"90", 90},     {"-90", -90},   {"abc", 0},     {"", 0},         {":", 0},        {"5:3", 300},
      {"5:345", 345}, {"1.5:00", 90}, {"2.5", 2},     {"3.5", 4},      {"1,000", 1000}, {"x:15", 15},
  };
  for (const auto& [text, minutes] : Minutes) EXPECT_EQ(Tools::fncHoursToMinutes(text), minutes) << text;
  for (const char* text : {"547:00", "40000", "546:99", "1e400:00"})
    EXPECT_EQ(numberOf([&] { Tools::fncHoursToMinutes(text); }), fault::Overflow) << text;
}

TEST(MachineClock, IsMeasuredNotLookedUp) {
  const std::pair<const char*, int> zones[] = {
      {"India Standard Time", 330}, {"Newfoundland Standard Time", -150}, {"Eastern Standard Time", -240}};
  for (const auto& [zone, offset] : zones) {
    simulator::WorldOptions options;
    options.Zone = zone;
    options.Begins = std::chrono::sys_days{std::chrono::year{2026} / 7 / 31} + std::chrono::milliseconds{999};
    const InWorld<simulator::SimulatedWorld> world{options};
    EXPECT_EQ(Tools::fncGetGMTOffset(), offset) << zone;
    EXPECT_EQ(textOfDate(Tools::fncGetGMTTime()), "2026-07-31 00:00:00");
  }
  const InWorld<simulator::SimulatedWorld> world;
  EXPECT_EQ(textOfDate(Tools::fncLocalTimeFromOffset(345)), "2026-03-02 19:45:00");
  EXPECT_EQ(textOfDate(Tools::fncLocalTimeFromOffset(-1111)), "2026-03-01 19:29:00");
}

}  // namespace
}  // namespace hy_wristlog
