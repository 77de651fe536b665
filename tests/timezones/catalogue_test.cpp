#include <gtest/gtest.h>

#include <set>

#include "fake_world.h"
#include "hy_wristlog/failure.h"
#include "timezones/Class_TimeZoneTools.h"

namespace hy_wristlog {
namespace {

using platform::SettingValue;
using platform::ZoneRecord;
using platform::ZoneRule;

ZoneRecord named(const std::string& display, const std::string& standard = "") {
  return {ZoneRule{}, display, standard, "", ""};
}

std::int32_t failureOf(const std::function<void()>& step, std::string* description = nullptr) {
  try {
    step();
  } catch (const Failure& failure) {
    if (description != nullptr) *description = failure.Description;
    return failure.Number;
  }
  return 0;
}

TEST(Abbreviations, AreThreeLettersInARowOfTheirOwnAndCompareExactly) {
  platform::UseFakeWorld world;
  world->MachineZones = true;
  std::set<std::string> seen;
  for (const std::string& key : platform::current().zones().keys()) {
    const std::string abbreviation = Class_TimeZoneTools::fncGetAbbrevFromKey(key);
    EXPECT_EQ(abbreviation.size(), 3U) << key;
    EXPECT_EQ(Class_TimeZoneTools::fncGetKeyFromAbbrev(abbreviation), key);
    seen.insert(abbreviation);
  }
  EXPECT_EQ(seen.size(), 85U);

  const std::pair<const char*, const char*> Rows[] = {
      {"EST", "Eastern Standard Time"},
      {"JST", "Jordan Standard Time"},
      {"GST", "Georgian Standard Time"},
      {"NST", "Namibia Standard Time"},
      {"CST", "Central Standard Time"},
      {"CMT", "Central Standard Time (Mexico)"},
      {"MXT", "Mexico Standard Time 2"},
      {"est", ""},
      {"XXX", ""},
      {"", ""},
  };
  for (const auto& [abbreviation, key] : Rows)
    EXPECT_EQ(Class_TimeZoneTools::fncGetKeyFromAbbrev(abbreviation), key) << abbreviation;
  EXPECT_EQ(Class_TimeZoneTools::fncGetAbbrevFromKey("jordan standard time"), "");
}

TEST(Catalogue, SortsByOffsetAndIsReadOnce) {
  platform::UseFakeWorld world;
  // Key names tell the expected place; equal offsets and unreadable ones keep the order they came in.
  world->Records = {
      {"9", named("(GMT+05:30) Chennai")},    {"3", named("(GMT) Casablanca")},
      {"0", named("&(GMT-10:00) Hawaii")},    {"8", named("(GMT+01:00) Paris")},
      {"4", named("(GMT+00:00) London")},     {"2", named("(GMT-03:00) Georgetown")},
      {"5", named("(?) Nobody knows")},       {"6", named("No offset")},
      {"1", named("(GMT-03:30) St. John's")}, {"7", named("(GMT-5:00) Short")},
  };
  Class_TimeZoneTools& tools = TimeZoneTools();
  ASSERT_TRUE(tools.fncPopulateTZICollection());
  ASSERT_EQ(tools.Get_TimeZoneCount(), 10);
  std::string order;
  for (const TimeZoneRef& zone : tools.Get_TimeZoneArray()) order += zone->KeyName;
  EXPECT_EQ(order, "0123456789");
  EXPECT_EQ(tools.Get_TimeZoneArray()[0]->DisplayName, "(GMT-10:00) Hawaii");
  const int reads = world->Reads;
  EXPECT_TRUE(tools.fncPopulateTZICollection());
  EXPECT_EQ(world->Reads, reads);
}

TEST(Catalogue, ReadsAZoneRecord) {
  platform::UseFakeWorld world;
  using namespace std::string_literals;
  const ZoneRule rule{300, 1, -60, {0, 11, 0, 1, 2, 3, 4, 5}, {2026, 3, 1, 2, 6, 7, 8, 9}};
  world->Records = {
      {"Eastern Standard Time", {rule, "&(GMT-05:00) East\0rest"s, "Std\0x"s, "Dlt\0x"s, "12,13\0x"s}},
      {"Lost Standard Time", {std::nullopt, "(?) Lost", "Lost", "", ""}},
  };
  const std::string path = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones";
  const TimeZoneRef east = Class_TimeZoneTools::fncGetRegValueLTZI(path + "\\Eastern Standard Time");
  EXPECT_EQ(east->DisplayName, "(GMT-05:00) East");
  EXPECT_EQ(east->StandardName + "/" + east->DaylightName + "/" + east->MapID, "Std/Dlt/12,13");
  EXPECT_EQ(east->KeyName + "/" + east->Abbreviation, "Eastern Standard Time/EST");
  EXPECT_EQ(east->Bias * 10000 + east->StandardBias * 100 + east->DaylightBias, 3000040);
  EXPECT_EQ(
      east->StandardDate.wMonth * 1000 + east->StandardDate.wDay * 100 + east->StandardDate.wMilliseconds,
      11105);
  EXPECT_EQ(east->DaylightDate.wYear, 2026);
  EXPECT_EQ(east->DaylightDate.wDayOfWeek * 1000 + east->DaylightDate.wHour * 100 +
                east->DaylightDate.wMinute * 10 + east->DaylightDate.wSecond,
            1678);
  EXPECT_EQ(Class_TimeZoneTools::fncGetRegValueStr(path + "\\Eastern Standard Time", "MapID"), "12,13");
  EXPECT_EQ(Class_TimeZoneTools::fncGetRegValueStr(path + "\\Eastern Standard Time", "TZI"), "");

  const TimeZoneRef lost = Class_TimeZoneTools::fncGetRegValueLTZI("Lost Standard Time");
  EXPECT_EQ(lost->Abbreviation, "");
  EXPECT_EQ(lost->Bias, 0);
  EXPECT_EQ(lost->StandardName, "Lost");

  EXPECT_EQ(TimeZoneTools().fncGetTZIfromAbbrev("EST")->KeyName, "Eastern Standard Time");
  EXPECT_EQ(TimeZoneTools().fncGetTZIfromAbbrev("PST"), nullptr);

  std::vector<TimeZoneRef> zones;
  EXPECT_FALSE(Class_TimeZoneTools::fncEnumSubKeys(INT32_MIN + 1, path, zones));
  EXPECT_FALSE(Class_TimeZoneTools::fncEnumSubKeys(INT32_MIN + 2, path + "\\x", zones));
  EXPECT_TRUE(zones.empty());
}

TEST(Catalogue, WithoutZonesIsAFailureUntilThereAreSome) {
  platform::UseFakeWorld world;
  Class_TimeZoneTools& tools = TimeZoneTools();
  std::string description;
  EXPECT_EQ(failureOf([&] { tools.fncPopulateTZICollection(); }, &description), 9998);
  EXPECT_EQ(description,
            "Unable to locate Time Zones information in Registry under the key: \r\n"
            "Software\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones");
  EXPECT_EQ(failureOf([&] { tools.fncGetTZIfromAbbrev("EST"); }), 9998);
  EXPECT_EQ(failureOf([&] { tools.fncLocalTimeZoneName(); }), 9998);
  world->Records = {{"Fiji Standard Time", named("(GMT+12:00) Fiji")}};
  EXPECT_NE(tools.fncGetTZIfromAbbrev("FIJ"), nullptr);
}

TEST(LocalZone, IsFoundByItsTrimmedStandardName) {
  using namespace std::string_literals;
  struct Case {
    std::string Name, Display, Abbreviation;
  };
  const Case Cases[] = {
      {" Fiji \0 Lost"s, "(GMT+12:00) Fiji", "FIJ"},
      {"Odd", "(GMT) Odd", ""},
      {"fiji", "", ""},
      {"", "", ""},
  };
  for (const Case& c : Cases) {
    SCOPED_TRACE(c.Name);
    platform::UseFakeWorld world;
    world->Records = {{"Nameless", named("(GMT-01:00) Nameless", " ")},
                      {"Fiji Standard Time", named("(GMT+12:00) Fiji", "Fiji  ")},
                      {"Odd", named("(GMT) Odd", "Odd")}};
    world->LocalStandardName = c.Name;
    world->Local.Hour = 12;
    const LocalZone local = TimeZoneTools().fncLocalTimeZoneName();
    EXPECT_EQ(local.DisplayName, c.Display);
    EXPECT_EQ(local.Abbreviation, c.Abbreviation);
    EXPECT_EQ(local.Zone != nullptr, !c.Display.empty());
    EXPECT_EQ(local.Offset, 720);
    EXPECT_TRUE(local.Daylight);
  }
}

TEST(LocalZone, AdjustsItsClockUnlessTheSettingIsOne) {
  platform::UseFakeWorld world;
  const std::pair<std::optional<SettingValue>, bool> Cases[] = {
      {std::nullopt, true},
      {SettingValue{4, {1, 0, 0, 0}}, false},
      {SettingValue{4, {0, 0, 0, 0}}, true},
      {SettingValue{4, {1, 1, 0, 0}}, true},
      {SettingValue{1, {'1', 0}}, false},
      {SettingValue{1, {'y', 'e', 's', 0}}, true},
      {SettingValue{3, {1, 0, 0, 0}}, true},
  };
  for (const auto& [value, expected] : Cases) {
    world->AutoDst = value;
    EXPECT_EQ(Class_TimeZoneTools::fncGetLocalAutoDST(), expected);
  }
  world->AutoDst = SettingValue{4, {1, 0, 0, 0}};
  world->SettingsRefuse = true;
  EXPECT_TRUE(Class_TimeZoneTools::fncGetLocalAutoDST());
}

}  // namespace
}  // namespace hy_wristlog
