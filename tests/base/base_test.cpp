#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "support/failures.h"

namespace hy_wristlog {
namespace {

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinite = std::numeric_limits<double>::infinity();

TEST(Dates, SerialDaysCarryAndMapShortYears) {
  const std::tuple<std::int32_t, std::int32_t, std::int32_t, double> cases[] = {
      {1899, 12, 30, 0},       {1899, 12, 29, -1},    {1970, 1, 1, UnixEpochDate},
      {2000, 2, 29, 36585},    {2001, 2, 29, 36951},  {2024, 2, 31, 45353},
      {2024, 0, 15, 45275},    {2023, 13, 1, 45292},  {2024, 1, 0, 45291},
      {2024, -11, 1, 44927},   {0, 1, 1, 36526},      {29, 12, 31, 47483},
      {30, 1, 1, 10959},       {99, 12, 31, 36525},   {100, 1, 1, -657434},
      {9999, 12, 31, 2958465}, {10000, 1, 0, 2958465}};
  for (const auto& [year, month, day, date] : cases)
    EXPECT_EQ(dateSerial(year, month, day), date) << year << '-' << month << '-' << day;

  constexpr auto Greatest = std::numeric_limits<std::int32_t>::max();
  for (const auto& c : std::vector<std::array<std::int32_t, 3>>{{100, 1, 0},
                                                                {9999, 12, 32},
                                                                {-1, 1, 1},
                                                                {2024, Greatest, 1},
                                                                {2024, 1, Greatest},
                                                                {Greatest, 1, 1}})
    EXPECT_EQ(numberOf([&] { dateSerial(c[0], c[1], c[2]); }), fault::InvalidCall) << c[0];
}

TEST(Dates, CivilTimesGoThereAndBackOnBothSidesOfDayZero) {
  const std::tuple<double, CivilTime, std::int32_t> cases[] = {
      {0.0, {1899, 12, 30, 0, 0, 0}, 6},     {0.5, {1899, 12, 30, 12, 0, 0}, 6},
      {-1.25, {1899, 12, 29, 6, 0, 0}, 5},   {-1.0, {1899, 12, 29, 0, 0, 0}, 5},
      {-2.75, {1899, 12, 28, 18, 0, 0}, 4},  {45351.75, {2024, 2, 29, 18, 0, 0}, 4},
      {-657434.5, {100, 1, 1, 12, 0, 0}, 5}, {2958465.0, {9999, 12, 31, 0, 0, 0}, 5}};
  for (const auto& [date, time, dayOfWeek] : cases) {
    const CivilTime t = civilFromDate(date);
    EXPECT_EQ(std::tie(t.Year, t.Month, t.Day, t.Hour, t.Minute, t.Second),
              std::tie(time.Year, time.Month, time.Day, time.Hour, time.Minute, time.Second))
        << date;
    EXPECT_EQ(dateFromCivil(time), date);
    EXPECT_EQ(weekday(date), dayOfWeek) << date;
    EXPECT_EQ(dateFromLinear(linearFromDate(date)), date);
  }
  for (double day : {-40000.0, -2.0, -1.0, 0.0, 1.0, 45000.0})
    for (std::int32_t second = 0; second < 86400; second += 997) {
      const double date = addTime(day, timeSerial(0, 0, second));
      const CivilTime t = civilFromDate(date);
      ASSERT_EQ(t.Hour * 3600 + t.Minute * 60 + t.Second, second) << day;
      ASSERT_EQ(datePart(date), day) << second;
    }
}

TEST(Dates, RoundToTheNearestSecondAndRefuseTheRest) {
  EXPECT_EQ(civilFromDate(1 - 0.4 / SecondsPerDay).Day, 31);
  EXPECT_EQ(datePart(1 - 0.4 / SecondsPerDay), 1.0);
  EXPECT_EQ(civilFromDate(1 - 0.6 / SecondsPerDay).Second, 59);
  EXPECT_EQ(dateFromLinear(-1e-17), 0.0);
  for (double bad : {-657435.0, 2958466.0, 2958465.999999, 1e300, -1e300, NotANumber, Infinite, -Infinite}) {
    EXPECT_EQ(numberOf([&] { civilFromDate(bad); }), fault::InvalidCall) << bad;
    EXPECT_EQ(numberOf([&] { formatDate(bad, "d"); }), fault::InvalidCall) << bad;
  }
  CivilTime early;
  early.Year = 29;
  EXPECT_EQ(numberOf([&] { dateFromCivil(early); }), fault::InvalidCall);
}

TEST(Dates, DifferencesAndSums) {
  EXPECT_EQ(timeSerial(1, -30, 0), 30.0 / MinutesPerDay);
  EXPECT_EQ(timeSerial(0, -90, 0), -90.0 / MinutesPerDay);
  EXPECT_EQ(timeSerial(48, 0, 3600), 2.0 + 1.0 / 24);
  EXPECT_EQ(addTime(-1.25, -0.5), -2.75);
  EXPECT_EQ(addTime(-1.25, 1.0), 0.25);
  EXPECT_EQ(addTime(0.25, -0.5), -1.75);
  EXPECT_EQ(secondsBetween(-1.75, 0.25), 43200);
  EXPECT_EQ(secondsBetween(25569.5, 25569.0), -43200);
  EXPECT_EQ(minutesBetween(timeSerial(0, 0, 59), timeSerial(0, 1, 0)), 1);
  EXPECT_EQ(minutesBetween(timeSerial(0, 1, 0), timeSerial(0, 1, 59)), 0);
  EXPECT_EQ(minutesBetween(0.0, addTime(0.0, timeSerial(0, 0, -1))), -1);
}

TEST(Formats, Dates) {
  const double evening = dateFromCivil({2024, 3, 5, 21, 7, 9});
  const double midnight = dateFromCivil({2024, 3, 5, 0, 0, 0});
  // clang-format off
  const std::tuple<double, const char*, const char*> cases[] = {
      {evening, "ddmmyy", "050324"}, {evening, "d dd ddd dddd", "5 05 Tue Tuesday"},
      {evening, "m mm mmm mmmm", "3 03 Mar March"}, {evening, "yyyy-mm-dd_Hh-Nn-Ss", "2024-03-05_21-07-09"},
      {evening, "dd - mmm - yyyy, HH:mm:ss", "05 - Mar - 2024, 21:07:09"}, {evening, "h:m mm", "21:7 03"},
      {evening, "hh mmm", "21 Mar"}, {evening, "h:nn am/pm a/p A/P ampm", "9:07 pm p P PM"},
      {midnight, "h:nn AM/PM", "12:00 AM"}, {dateFromCivil({2024, 3, 5, 12, 30, 0}), "h:nn AMPM", "12:30 PM"},
      {evening, "y yy", "65 24"}, {dateFromCivil({2024, 12, 31, 23, 59, 59}), "y", "366"},
      {evening, "ttttt", "9:07:09 PM"}, {evening, "c", "3/5/2024 9:07:09 PM"}, {midnight, "c", "3/5/2024"},
      {0.25, "c", "6:00:00 AM"}, {0.0, "c", "12/30/1899"}, {-1.25, "c", "12/29/1899 6:00:00 AM"},
      {evening, "ss.000", "09.000"}, {evening, "\\d\\a\\y \"hour\" h\\", "day hour 21"}, {evening, "\"open", "open"},
      {evening, "", ""}, {dateFromCivil({105, 1, 2, 0, 0, 0}), "yyyy yy", "0105 05"}};
  // clang-format on
  for (const auto& [date, pattern, text] : cases) {
    EXPECT_EQ(formatDate(date, pattern), text) << pattern;
    DateSequence sequence(pattern);
    for (const double second : {0.0, 15.0, 60.0, 3600.0, 3585.0, -7200.0, 90000.0, 90001.0, -1e6, -1e6 + 1}) {
      std::string appended = "> ";
      sequence.append(appended, date + second / SecondsPerDay);
      EXPECT_EQ(appended, "> " + formatDate(date + second / SecondsPerDay, pattern)) << pattern << second;
    }
  }
}

TEST(Formats, Numbers) {
  // clang-format off
  const std::tuple<double, const char*, const char*> cases[] = {
      {0, "0", "0"}, {0.5, "0", "1"}, {2.5, "0", "3"}, {-2.5, "0", "-3"}, {-0.4, "0", "0"},
      {1e20, "0", "100000000000000000000"}, {7, "00000", "00007"}, {-7, "000", "-007"}, {9999.5, "0000", "10000"},
      {99.5, "##0", "100"}, {0, "####0", "0"}, {0.25, "####0.0", "0.3"}, {0.05, "####0.0", "0.1"},
      {1.005, "0.00", "1.01"}, {0.95, "#####0.0", "1.0"}, {-1234.55, "#####0.0", "-1234.6"}, {0.5, "#.##", ".5"},
      {0, "0.000E+00", "0.000E+00"}, {1234.5, "0.000E+00", "1.235E+03"}, {9.9996, "0.000E+00", "1.000E+01"},
      {-0.00012345, "0.000E+00", "-1.235E-04"}, {1e-200, "0.000E+00", "1.000E-200"}, {12345, "00.0E-0", "12.3E3"},
      {5, "(0) V", "(5) V"}, {Infinite, "0.0", "INF"}};
  // clang-format on
  for (const auto& [value, pattern, text] : cases)
    EXPECT_EQ(formatNumber(value, pattern), text) << value << ' ' << pattern;

  std::string texts;
  for (const double value : {0.0, -0.0, 0.5, -1.0, 1e20, 1e15, 123456789012345.0, 0.1 + 0.2, 0.0001, 1.5e-7})
    texts += textOf(value) + " ";
  EXPECT_EQ(texts, "0 0 0.5 -1 1E+20 1E+15 123456789012345 0.3 0.0001 1.5E-07 ");
}

TEST(Numbers, RoundHalvesToEvenWithinTheirType) {
  std::string rounded;
  for (const double value :
       {0.5, 1.5, 2.5, -0.5, -1.5, -2.5, 2.51, -2.51, 0.49999999999999994, 2147483647.4, -2147483648.5})
    rounded += std::to_string(roundToInt32(value)) + " ";
  EXPECT_EQ(rounded, "0 2 2 0 -2 -2 3 -3 0 2147483647 -2147483648 ");
  EXPECT_EQ(roundToInt16(32767.4), 32767);
  EXPECT_EQ(roundToInt16(-32768.5), -32768);
  EXPECT_EQ(roundToInt64(9007199254740993.0), 9007199254740992);
  EXPECT_EQ(roundToInt64(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
  for (double bad : {32767.5, -32769.0, NotANumber, Infinite})
    EXPECT_EQ(numberOf([&] { roundToInt16(bad); }), fault::Overflow) << bad;
  EXPECT_EQ(numberOf([] { roundToInt32(2147483647.5); }), fault::Overflow);
  EXPECT_EQ(numberOf([] { roundToInt64(9223372036854775808.0); }), fault::Overflow);
}

TEST(Numbers, TextIsNumericAndHasALeadingValue) {
  const std::tuple<const char*, bool, double> cases[] = {
      {"1", true, 1},        {" -2.5 ", true, -2.5},    {"5-", true, 5},      {"+ 3", true, 3},
      {"1,234.5", true, 1},  {"1.2,3", false, 1.2},     {",1", false, 0},     {".5", true, 0.5},
      {"5.", true, 5},       {".", false, 0},           {"", false, 0},       {" ", false, 0},
      {"-", false, 0},       {"--1", false, 0},         {"-7-", false, -7},   {"1e3", true, 1000},
      {"1D-2", true, 0.01},  {"1E", false, 1},          {"1e+", false, 1},    {"2 3", false, 23},
      {"&HfF", true, 0},     {"&O17", true, 0},         {"&H", false, 0},     {"&HG", false, 0},
      {"&O8", false, 0},     {"&H123456789", false, 0}, {"0x10", false, 0},   {"33)", false, 33},
      {"1.2.3", false, 1.2}, {"1e-999", true, 0},       {"1e999", false, -1}, {"nan", false, 0},
      {"inf", false, 0},     {"12abc", false, 12}};
  for (const auto& [text, numeric, value] : cases) {
    EXPECT_EQ(isNumeric(text), numeric) << text;
    if (value == -1)
      EXPECT_EQ(numberOf([&, t = text] { leadingNumber(t); }), fault::Overflow) << text;
    else
      EXPECT_EQ(leadingNumber(text), value) << text;
  }
  EXPECT_EQ(leadingNumber("0." + std::string(400, '0') + "1"), 0.0);
  const std::pair<const char*, double> whole[] = {{" 1,234.5- ", -1234.5}, {"- 7", -7},  {"&HFF", 255},
                                                  {"&hFFFFFFFF", -1},      {"&O17", 15}, {"1D2", 100}};
  for (const auto& [text, value] : whole) EXPECT_EQ(parseNumber(text), value) << text;
  EXPECT_TRUE(isDigits("007"));
  for (const char* text : {"", "-1", "1 ", "1.0"}) EXPECT_FALSE(isDigits(text));
}

TEST(CodePage, EveryByteComesBackAndStrangersBecomeQuestionMarks) {
  std::vector<std::uint8_t> all(256);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
  EXPECT_EQ(ansiFromUtf8(utf8FromAnsi(all)), all);
  EXPECT_EQ(utf8FromAnsiText("\x80 \xE9 \x81 \x9F"), "\u20AC \u00E9 \xC2\x81 \u0178");

  // clang-format off
  const std::pair<std::string, std::string> cases[] = {
      {"\u20AC\u00FC", "\x80\xFC"}, {"a\u0416b", "a?b"}, {"\U0001F600!", "?!"}, {"\xC2\x80", "?"}, {"\xC2", "?"},
      {"\xE2\x82", "??"}, {"\xC0\xAF", "??"}, {"\xED\xA0\x80", "???"}, {"\xF4\x90\x80\x80", "????"}, {"\xFFz", "?z"},
      {"\xE0\x80\x80", "???"}, {std::string("\0x", 2), std::string("\0x", 2)}};
  // clang-format on
  for (const auto& [utf8, ansi] : cases) EXPECT_EQ(ansiTextFromUtf8(utf8), ansi) << utf8;
}

}  // namespace
}  // namespace hy_wristlog
