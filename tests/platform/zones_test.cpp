#include <gtest/gtest.h>

#include <random>

#include "platform/linux/linux_zones.h"
#include "platform/linux/posix_tz.h"
#include "platform/linux/tzif.h"
#include "platform/zone_catalogue.h"
#include "support/surroundings.h"

namespace hy_wristlog::platform {
namespace {

TEST(Zones, NamesSayTheOffsetOfTheRule) {
  LinuxZones zones;
  ASSERT_EQ(zones.keys().size(), 85U);
  for (const std::string& key : zones.keys()) {
    const ZoneRecord record = zones.read(key);
    const std::int32_t minutes = -record.Rule->Bias;
    std::array<char, 40> offset{};
    std::snprintf(offset.data(), offset.size(), "(GMT%+03d:%02d) ", minutes / 60, std::abs(minutes) % 60);
    EXPECT_TRUE(record.Display.starts_with(minutes == 0 ? "(GMT) " : offset.data())) << record.Display;
    EXPECT_EQ(record.Standard, key);
    EXPECT_NE(record.Daylight.find("Daylight"), std::string::npos) << record.Daylight;
  }
  EXPECT_EQ(zones.read("Eastern Standard Time").Display, "(GMT-05:00) Eastern Time (US & Canada)");
  EXPECT_EQ(zones.read("Central Standard Time (Mexico)").Daylight, "Central Daylight Time (Mexico)");
  EXPECT_FALSE(zones.read("eastern standard time").Rule);
}

TEST(Zones, RulesOfEveryFormBecomeRecords) {
  const ZoneTransition never{};
  const std::tuple<const char*, std::int32_t, std::int32_t, ZoneTransition, ZoneTransition> cases[] = {
      {"IST-5:30", -330, 0, never, never},
      {"BRT+3", 180, 0, never, never},
      {"EST5EDT", 300, -60, {0, 11, 0, 1, 2}, {0, 3, 0, 2, 2}},
      {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, {0, 4, 0, 1, 2}, {0, 10, 0, 1, 2}},
      {"EET-2EEST,M4.5.5/0,M10.5.4/24", -120, -60, {0, 10, 4, 5, 24}, {0, 4, 5, 5, 0}},
      {"<-02>2<-01>,M3.5.0/-1,M10.5.0/0", 120, -60, {0, 10, 0, 5, 0}, {0, 3, 0, 5, -1}},
      {"<-02>2<-01>,M3.5.0/-1:30:10,M10.5.0/0", 120, -60, {0, 10, 0, 5, 0}, {0, 3, 0, 5, -2, 29, 50}},
      {"AAA3BBB,J60/2,J300/26:30:15", 180, -60, {1, 10, 0, 27, 26, 30, 15}, {1, 3, 0, 1, 2}},
      {"AAA3BBB,59,365", 180, -60, {1, 12, 0, 31, 2}, {1, 3, 0, 1, 2}},
      {"IST-1GMT0,M10.5.0,M3.5.0/1", 0, -60, {0, 10, 0, 5, 2}, {0, 3, 0, 5, 1}},
      {"EST5EDT,0/0,J365/25", 240, 0, never, never}};
  for (const auto& [text, bias, daylightBias, standard, daylight] : cases) {
    const auto tz = parsePosixTz(text);
    ASSERT_TRUE(tz) << text;
    EXPECT_EQ(zoneRuleFromTz(*tz), (ZoneRule{bias, 0, daylightBias, standard, daylight})) << text;
  }
  for (const char* text : {"", "E5", "EST", "EST5EDT,", "EST5EDT,M3.2.0", "EST5EDT,M13.2.0,M11.1.0", "<+05-5",
                           "EST5EDT,M3.2.0,M11.1.0x", "EST5EDT,M3.0.0,M11.1.0", "EST168", "EST5EDT,J0,J9",
                           "EST5EDT,M3.2.0/168,M11.1.0", "EST5EDT,366,1", "EST99999999999999999999"})
    EXPECT_FALSE(parsePosixTz(text)) << text;
}

TEST(Zones, TheMachinesZoneIsFoundByNameThenByRule) {
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"America/New_York", "Eastern Standard Time"}, {"America/Detroit", "Eastern Standard Time"},
      {":Europe/Warsaw", "Central European Standard Time"}, {"Asia/Calcutta", "India Standard Time"},
      {"/usr/share/zoneinfo/Europe/Paris", "Romance Standard Time"}, {"Pacific/Chatham", ""},
      {"PST8PDT,M3.2.0,M11.1.0", "Pacific Standard Time"}, {"Europe/Dublin", "GMT Standard Time"},
      {"UTC", "Greenwich Standard Time"}, {"", "Greenwich Standard Time"}, {":", "Greenwich Standard Time"},
      {"No/Such_Zone", ""}, {"../../../etc/passwd", ""}};
  // clang-format on
  LinuxZones zones;
  for (const auto& [name, key] : cases) {
    const Variable tz{"TZ", name};
    EXPECT_EQ(zones.localStandardName(), key) << name;
    const bool isUnknown = *key == 0 && std::string_view(name) != "Pacific/Chatham";
    EXPECT_EQ(zones.trouble().empty(), !isUnknown) << zones.trouble();
    EXPECT_TRUE(!isUnknown || zones.localName().empty()) << name;
  }
}

TEST(Zones, ANameInTheDatabaseHasARecordWithTheSameRulesOrNone) {
  LinuxZones zones;
  for (const CatalogueZone& zone : zoneCatalogue()) {
    // Two keys share Mexico City; the first one counts.
    const bool isSecond = zone.Key == "Mexico Standard Time";
    EXPECT_EQ(zones.named(zone.TzName)->Key, isSecond ? "Central Standard Time (Mexico)" : zone.Key);
  }
  for (const auto& [name, key] : {std::pair{"Asia/Calcutta", "India Standard Time"},
                                  {"UTC", "Greenwich Standard Time"},
                                  {"Europe/Rome", "Central Europe Standard Time"},
                                  {"Australia/Lord_Howe", ""},
                                  {"Pacific/Chatham", ""},
                                  {"Africa/Casablanca", ""}})
    EXPECT_EQ(zones.named(name)->Key, key) << name;
  for (const char* name :
       {"", "No/Such_Zone", "../../../etc/passwd", "/usr/share/zoneinfo/Asia/Tokyo", "EST5"})
    EXPECT_FALSE(zones.named(name)) << name;
}

TEST(Zones, TheMachinesZoneIsReadFromItsFiles) {
  const Variable tz{"TZ", std::nullopt};
  const TemporaryFolder etc;
  const auto expect = [&](const std::string& key) {
    LinuxZones zones{etc.path()};
    EXPECT_EQ(zones.localStandardName(), key);
    EXPECT_EQ(zones.trouble(),
              key.empty() ? etc / "localtime" + " cannot be read as a zone of the tz database." : "");
  };
  expect("Greenwich Standard Time");
  etc.put("timezone", "Europe/Berlin\n");
  expect("W. Europe Standard Time");
  etc.link("localtime", "/usr/share/zoneinfo/Asia/Tokyo");
  expect("Tokyo Standard Time");
  std::filesystem::remove(etc / "localtime");
  etc.put("localtime", contentOf("/usr/share/zoneinfo/Europe/Warsaw"));
  expect("Central European Standard Time");
  std::filesystem::remove(etc / "timezone");
  expect("Central European Standard Time");
  etc.put("timezone", "Europe/Berlin\n");
  etc.put("localtime", "TZif2 but nothing more");
  expect("");
  std::filesystem::remove(etc / "localtime");
  etc.link("localtime", "/usr/share/zoneinfo/No/Such_Zone");
  expect("");
}

TEST(Zones, AMissingDatabaseGivesRecordsWithoutRules) {
  const TemporaryFolder database;
  const Variable folder{"TZDIR", database.path()};
  LinuxZones zones;
  EXPECT_TRUE(zones.keys().empty());
  EXPECT_FALSE(zones.read("Tokyo Standard Time").Rule);
  EXPECT_EQ(zones.read("Tokyo Standard Time").Display, "(?) Osaka, Sapporo, Tokyo");
  database.put("Asia/Tokyo", contentOf("/usr/share/zoneinfo/Asia/Kolkata"));
  EXPECT_EQ(zones.read("Tokyo Standard Time").Rule->Bias, -330);
  const Variable tz{"TZ", "UTC"};
  EXPECT_EQ(zones.localStandardName(), "Greenwich Standard Time");
}

TEST(Zones, DamagedFilesGiveARuleOrNone) {
  const std::string good = contentOf("/usr/share/zoneinfo/America/New_York");
  ASSERT_EQ(tzifFooter(good), "EST5EDT,M3.2.0,M11.1.0");
  std::mt19937 random{20240229};
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  for (int round = 0; round < 20000; ++round) {
    std::string file = good;
    if (round % 3 == 0) file.resize(44 + below(file.size() - 44));
    // Most of the damage in the counts of the header and in the footer, where it matters.
    for (const std::size_t place : {below(file.size()), below(44), file.size() - 1 - below(44)})
      file[place] = static_cast<char>(below(256));
    const auto footer = tzifFooter(file);
    const auto tz = footer ? parsePosixTz(*footer) : std::nullopt;
    if (!tz) continue;
    const ZoneRule rule = zoneRuleFromTz(*tz);
    EXPECT_LE(std::abs(rule.Bias), 1440);
    for (const ZoneTransition& change : {rule.StandardDate, rule.DaylightDate})
      EXPECT_TRUE(std::abs(change.Hour) <= 168 &&
                  (change.Month == 0 || (change.Day >= 1 && change.Day <= 31)));
  }
}

}  // namespace
}  // namespace hy_wristlog::platform
