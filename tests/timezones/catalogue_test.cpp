#include <gtest/gtest.h>

#include <map>
#include <set>

#include "platform/zone_catalogue.h"
#include "simulator/simulated_world.h"
#include "support/failures.h"
#include "support/in_world.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

using namespace std::string_literals;
using platform::SettingValue;
using platform::ZoneRecord;
using platform::ZoneRule;
using Tools = Class_TimeZoneTools;

/// A world with zone records of its own.
class RecordsWorld : public simulator::SimulatedWorld, platform::ZoneRecords {
 public:
  std::vector<std::pair<std::string, ZoneRecord>> Records;
  std::string LocalName;
  int Reads = 0;

  platform::ZoneRecords& zones() override { return *this; }

 private:
  std::vector<std::string> keys() override {
    std::vector<std::string> keys;
    for (const auto& record : Records) keys.push_back(record.first);
    return keys;
  }
  ZoneRecord read(std::string_view key) override {
    ++Reads;
    for (const auto& record : Records)
      if (record.first == key) return record.second;
    return {};
  }
  std::string localStandardName() override { return LocalName; }
};

ZoneRecord named(const std::string& display, const std::string& standard = "") {
  return {ZoneRule{}, display, standard, "", ""};
}

TEST(Abbreviations, AreThreeLettersInARowOfTheirOwnAndCompareExactly) {
  std::set<std::string> seen;
  for (const platform::CatalogueZone& zone : platform::zoneCatalogue()) {
    const std::string abbreviation = Tools::fncGetAbbrevFromKey(zone.Key);
    EXPECT_EQ(abbreviation.size(), 3U) << zone.Key;
    EXPECT_EQ(Tools::fncGetKeyFromAbbrev(abbreviation), zone.Key);
    seen.insert(abbreviation);
  }
  EXPECT_EQ(seen.size(), 85U);
  for (const auto& [abbreviation, key] : std::map<std::string, std::string>{{"JST", "Jordan Standard Time"},
                                                                            {"GST", "Georgian Standard Time"},
                                                                            {"NST", "Namibia Standard Time"},
                                                                            {"CST", "Central Standard Time"},
                                                                            {"est", ""},
                                                                            {"", ""}})
    EXPECT_EQ(Tools::fncGetKeyFromAbbrev(abbreviation), key);
  EXPECT_EQ(Tools::fncGetAbbrevFromKey("jordan standard time"), "");
}

TEST(Catalogue, SortsByOffsetAndIsReadOnce) {
  const InWorld<RecordsWorld> world;
  // Key names tell the expected place; equal offsets and unreadable ones keep the order they came in.
  world->Records = {{"9", named("(GMT+05:30) Chennai")},    {"3", named("(GMT) Casablanca")},
                    {"0", named("&(GMT-10:00) Hawaii")},    {"8", named("(GMT+01:00) Paris")},
                    {"4", named("(GMT+00:00) London")},     {"2", named("(GMT-03:00) Georgetown")},
                    {"5", named("(?) Nobody knows")},       {"6", named("No offset")},
                    {"1", named("(GMT-03:30) St. John's")}, {"7", named("(GMT-5:00) Short")}};
  ASSERT_TRUE(TimeZoneTools().fncPopulateTZICollection());
  std::string order;
  for (const TimeZoneRef& zone : TimeZoneTools().Get_TimeZoneArray()) order += zone->KeyName;
  EXPECT_EQ(order, "0123456789");
  EXPECT_EQ(TimeZoneTools().Get_TimeZoneArray()[0]->DisplayName, "(GMT-10:00) Hawaii");
  const int reads = world->Reads;
  EXPECT_TRUE(TimeZoneTools().fncPopulateTZICollection());
  EXPECT_EQ(world->Reads, reads);
}

TEST(Catalogue, ReadsAZoneRecord) {
  const InWorld<RecordsWorld> world;
  const ZoneRule rule{300, 1, -60, {0, 11, 0, 1, 2, 3, 4, 5}, {2026, 3, 1, 2, 6, 7, 8, 9}};
  world->Records = {
      {"Eastern Standard Time", {rule, "&(GMT-05:00) East\0rest"s, "Std\0x"s, "Dlt\0x"s, "12,13\0x"s}},
      {"Lost Standard Time", {std::nullopt, "(?) Lost", "Lost", "", ""}}};
  const std::string path = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones";
  const TimeZoneRef east = Tools::fncGetRegValueLTZI(path + "\\Eastern Standard Time");
  EXPECT_EQ(east->DisplayName + "/" + east->StandardName + "/" + east->DaylightName + "/" + east->MapID,
            "(GMT-05:00) East/Std/Dlt/12,13");
  EXPECT_EQ(east->KeyName + "/" + east->Abbreviation, "Eastern Standard Time/EST");
  std::string fields;
  for (const CLass_SystemTime& time : {east->StandardDate, east->DaylightDate})
    for (const int field : {time.wYear, time.wMonth, time.wDayOfWeek, time.wDay, time.wHour, time.wMinute,
                            time.wSecond, time.wMilliseconds})
      fields += std::to_string(field) + " ";
  EXPECT_EQ(fields, "0 11 0 1 2 3 4 5 2026 3 1 2 6 7 8 9 ");
  EXPECT_EQ(std::tie(east->Bias, east->StandardBias, east->DaylightBias), std::tuple(300, 1, -60));
  EXPECT_EQ(Tools::fncGetRegValueStr(path + "\\Eastern Standard Time", "MapID"), "12,13");
  EXPECT_EQ(Tools::fncGetRegValueStr(path + "\\Eastern Standard Time", "TZI"), "");

  const TimeZoneRef lost = Tools::fncGetRegValueLTZI("Lost Standard Time");
  EXPECT_EQ(lost->StandardName + lost->Abbreviation + std::to_string(lost->Bias), "Lost0");
  EXPECT_EQ(TimeZoneTools().fncGetTZIfromAbbrev("EST")->KeyName, "Eastern Standard Time");
  EXPECT_EQ(TimeZoneTools().fncGetTZIfromAbbrev("PST"), nullptr);

  std::vector<TimeZoneRef> zones;
  EXPECT_FALSE(Tools::fncEnumSubKeys(INT32_MIN + 1, path, zones));
  EXPECT_FALSE(Tools::fncEnumSubKeys(INT32_MIN + 2, path + "\\x", zones));
  EXPECT_TRUE(zones.empty());
}

TEST(Catalogue, WithoutZonesIsAFailureUntilThereAreSome) {
  const InWorld<RecordsWorld> world;
  EXPECT_EQ(failureOf([] { TimeZoneTools().fncPopulateTZICollection(); }),
            std::pair(9998,
                      "Unable to locate Time Zones information in Registry under the key: \r\n"
                      "Software\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones"s));
  EXPECT_EQ(numberOf([] { TimeZoneTools().fncGetTZIfromAbbrev("EST"); }), 9998);
  EXPECT_EQ(numberOf([] { TimeZoneTools().fncLocalTimeZoneName(); }), 9998);
  world->Records = {{"Fiji Standard Time", named("(GMT+12:00) Fiji")}};
  EXPECT_NE(TimeZoneTools().fncGetTZIfromAbbrev("FIJ"), nullptr);
}

TEST(LocalZone, IsFoundByItsTrimmedStandardName) {
  const InWorld<RecordsWorld> world;
  world->Records = {{"Nameless", named("(GMT-01:00) Nameless", " ")},
                    {"Fiji Standard Time", named("(GMT+12:00) Fiji", "Fiji  ")},
                    {"Odd", named("(GMT) Odd", "Odd")}};
  for (const auto& [name, found] : std::map<std::string, std::string>{
           {" Fiji \0 Lost"s, "(GMT+12:00) Fiji/FIJ"}, {"Odd", "(GMT) Odd/"}, {"fiji", "/"}, {"", "/"}}) {
    world->LocalName = name;
    const LocalZone local = TimeZoneTools().fncLocalTimeZoneName();
    EXPECT_EQ(local.DisplayName + "/" + local.Abbreviation, found);
    EXPECT_EQ(local.Zone != nullptr, found != "/");
    EXPECT_TRUE(local.Offset == -300 && local.Daylight);
  }
}

TEST(LocalZone, AdjustsItsClockUnlessTheSettingIsOne) {
  const InWorld<simulator::SimulatedWorld> world;
  EXPECT_TRUE(Tools::fncGetLocalAutoDST());
  const std::pair<SettingValue, bool> cases[] = {{{4, {0, 0, 0, 0}}, true}, {{4, {1, 1, 0, 0}}, true},
                                                 {{1, {'1', 0}}, false},    {{1, {'y', 0}}, true},
                                                 {{3, {1, 0, 0, 0}}, true}, {{4, {1, 0, 0, 0}}, false}};
  for (const auto& [value, expected] : cases) {
    world->settings().write(INT32_MIN + 2, "System\\CurrentControlSet\\Control\\TimeZoneInformation",
                            "DisableAutoDaylightTimeSet", value);
    EXPECT_EQ(Tools::fncGetLocalAutoDST(), expected);
  }
  world->memorySettings().ErrorNumber = 13;
  EXPECT_TRUE(Tools::fncGetLocalAutoDST());
}

}  // namespace
}  // namespace hy_wristlog
