#include <cmath>
#include <locale>

#include "apps/markup_check.h"
#include "apps/sandbox.h"
#include "picture/actogram.h"
#include "picture/findings.h"
#include "picture/markup.h"
#include "picture/report.h"
#include "picture/scales.h"

namespace wristlog::picture {
namespace {

constexpr std::int64_t Hour = 3600;
/// 2026-03-02, a Monday, 00:00 UTC.
constexpr std::int64_t Monday = 1772409600;

PlottedRecording recordingOf(std::int64_t start, std::int32_t epoch, const Series& activity) {
  PlottedRecording recording;
  recording.Subject = "S";
  recording.Logger = "L";
  recording.Start = start;
  recording.Epoch = epoch;
  recording.Epochs = activity.size();
  recording.Activity = activity;
  return recording;
}

std::string svgOf(const PlottedRecording& recording) { return actogramSvg(recording, daysOf(recording)); }

/// The path of a class within a day of the picture; empty when it has none.
std::string pathOf(const std::string& svg, std::size_t day, const std::string& classes) {
  const std::size_t from = svg.find("<g id=\"a-" + std::to_string(day) + "\">");
  const std::size_t end = svg.find("</g>", from);
  const std::string key = classes + "\" d=\"";
  const std::size_t at = svg.find(key, from);
  if (from == svg.npos || at > end) return {};
  return svg.substr(at + key.size(), svg.find('"', at + key.size()) - at - key.size());
}

/// "2-4:7 6-8:9.5": the columns (from-to, 1.5 pixels each) and the values along a day, in runs.
template <class Value>
std::string runs(const Day& day, const Value& value) {
  std::string text;
  for (std::size_t from = 0; from < day.Columns.size();) {
    std::size_t to = from + 1;
    const std::string here = value(day.Columns[from]);
    while (to < day.Columns.size() && value(day.Columns[to]) == here) ++to;
    if (!here.empty())
      text += (text.empty() ? "" : " ") + std::to_string(from) + "-" + std::to_string(to) + ":" + here;
    from = to;
  }
  return text;
}

std::string stateOf(const Column& column) {
  if (!column.Covered) return "";
  return (column.OffWrist ? "off" : "") + (column.hasValue() ? number(double{column.Activity}) : "gap");
}

class DecimalComma : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(Picture, TextAndNumbersInMarkup) {
  // clang-format off
  const std::pair<std::string, std::string> texts[] = {
      {"<script>\"&'", "&lt;script&gt;&quot;&amp;&#39;"}, {"]]>--", "]]&gt;--"}, {"é€\n", "é€\n"},
      {std::string("\0\x0B\x7F\xC2\x85", 5), "\uFFFD\uFFFD\uFFFD\uFFFD"}, {"\xE9<", "\uFFFD&lt;"},
      {"\xE2\x82<", "\uFFFD\uFFFD&lt;"}, {"\xC0\xBC\xED\xA0\x80<", "\uFFFD\uFFFD\uFFFD&lt;"},
      {"\xEF\xBF\xBE\xF4\x90\x80\x80<", "\uFFFD\uFFFD&lt;"}, {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"}};
  // clang-format on
  for (const auto& [text, markup] : texts) {
    const std::string result = escaped(text);
    EXPECT_EQ(MarkupCheck::problemOf(result), "");
    EXPECT_EQ(result, markup);
  }
  const std::pair<double, std::string> numbers[] = {
      {12.5, "12.5"}, {12, "12"}, {-0.04, "0"}, {1e300, "1000000000000000"}, {NAN, "0"}, {0.05, "0.1"}};
  for (const auto& [value, text] : numbers) EXPECT_EQ(number(value), text);
  std::string tenths;
  for (const int value : {0, 5, -5, 12, -120}) appendTenths(tenths, value);
  EXPECT_EQ(tenths, "0.5-.51.2-12");
}

TEST(Picture, EpochsBecomeColumns) {
  const float none = NoValue;
  const std::tuple<const char*, std::int64_t, std::int32_t, Series, const char*> cases[] = {
      {"means of 5 minutes", Monday, 60, {1, 2, 3, 4, 5, 9}, "0-1:3 1-2:9"},
      {"gap beside zero", Monday, 300, {0, 0, none, none, 4}, "0-2:0 2-4:gap 4-5:4"},
      {"a gap in a column does not lower it", Monday, 60, {4, none, none, 8, none}, "0-1:6"},
      {"long epochs reach over columns", Monday + 120, 300, {10, 20}, "0-1:10 1-2:16 2-3:20"},
      {"longest epochs", Monday, 32767, {7}, "0-110:7"},
      {"before 1970", -600, 300, {1, 2, 3}, "286-287:1 287-288:2"}};
  for (const auto& [name, start, epoch, activity, columns] : cases) {
    SCOPED_TRACE(name);
    const RecordedDays days = daysOf(recordingOf(start, epoch, activity));
    EXPECT_EQ(runs(days.Days.at(0), stateOf), columns);
    EXPECT_EQ(days.Totals.Epochs, std::ssize(activity));
  }
  PlottedRecording recording = recordingOf(Monday + 23 * Hour, 1800, {5, none, 6, 7});
  recording.OffWrist = {true, true, false, true};
  recording.Offsets = {{0, 30}};
  const RecordedDays days = daysOf(recording);
  ASSERT_EQ(days.Days.size(), 2U);
  EXPECT_EQ(runs(days.Days[0], stateOf) + " | " + runs(days.Days[1], stateOf),
            "282-288:off5 | 0-6:offgap 6-12:6 12-18:off7");
  EXPECT_EQ(days.Days[1].Totals.Epochs * 100 + days.Days[1].Totals.Valued * 10 + days.Totals.OffWrist, 323);
  EXPECT_EQ(findingsOf(recording, days),
            (std::vector<std::string>{"Gaps: 30 min (25 % of the recording) have no value.",
                                      "Off the wrist: 1 h 30 min (75 % of the recording)."}));
}

TEST(Picture, DaysWithAChangeOfTheClocks) {
  // Values are the hours since the start, so that it can be seen which hour stands where; one is larger.
  Series hours;
  for (int i = 0; i < 25; ++i) hours.push_back(i == 2 ? 50.0F : static_cast<float>(i));
  // Start, offsets before and after the change, the change's time after the start and its column.
  using Case = std::tuple<const char*, std::int64_t, std::int32_t, std::int32_t, std::int64_t, std::size_t,
                          std::string, std::int64_t>;
  const Case cases[] = {
      {"forward at 2", Monday + 5 * Hour, -300, -240, 2 * Hour, 24, "12-24:1 36-48:50", 23},
      {"back at 3", Monday - 2 * Hour, 120, 60, 3 * Hour, 36, "12-24:1 24-36:50 36-48:4", 25},
      {"back by half an hour", Monday - 11 * Hour, 660, 630, 2 * Hour, 24, "12-18:1 18-30:50 30-42:3", 25},
      {"forward over midnight", Monday, 0, 60, 0, 0, "12-24:0 24-36:1", 23}};
  for (const auto& [name, start, former, later, changesAfter, change, around, epochs] : cases) {
    SCOPED_TRACE(name);
    PlottedRecording recording = recordingOf(start, 3600, hours);
    recording.Offsets = {{start - 100 * Hour, former}, {start + changesAfter, later}};
    const RecordedDays days = daysOf(recording);
    const Day& day = days.Days.at(0);
    EXPECT_EQ(dateText(day.Number), "2026-03-02");
    EXPECT_NE((" " + runs(day, stateOf) + " ").find(" " + around + " "), std::string::npos)
        << runs(day, stateOf);
    EXPECT_EQ(day.Totals.Epochs, epochs);
    if (changesAfter == 0) continue;
    ASSERT_EQ(day.Changes.size(), 1U);
    EXPECT_EQ(day.Changes[0].Column, change);
    EXPECT_EQ(day.Changes[0].Seconds, (later - former) * 60);
    EXPECT_NE(pathOf(svgOf(recording), 0, "a-change"), "");
  }
}

TEST(Picture, WhatStandsWhere) {
  const float none = NoValue;
  PlottedRecording recording = recordingOf(Monday, 300, {0, 0, 100, 50, none, none, 0, 1e6F});
  recording.Activity.resize(500, 100);
  recording.Epochs = recording.Activity.size();
  recording.Light = {{LightColour::Lux, {1e5F, 0.1F, 0, 100, none, 1e9F}}};
  recording.LightAxis = {"lux", -1, 5};
  recording.Markers = {{Monday + 12 * Hour, 1}, {Monday + 12 * Hour + 1, 1}, {Monday + 30 * Hour, 2}, {0, 1}};
  recording.Events = {
      {Monday + Hour, "r", Sign::Reset}, {std::nullopt, "d", Sign::Damage}, {5, "far", Sign::Reset}};
  const std::string svg = svgOf(recording);
  EXPECT_EQ(MarkupCheck::problemOf(svg), "");
  // Rows of 64 pixels: the base line at 63, the top of the bars at 10; the highest value of many is cut.
  EXPECT_EQ(pathOf(svg, 0, "a-bars").substr(0, 60), "M0 63h3v-53h1.5v26.5h1.5v26.5zM9 63h1.5v-53h421.5v53z");
  EXPECT_EQ(pathOf(svg, 0, "a-cut"), "M10.5 10h1.5");
  EXPECT_EQ(pathOf(svg, 0, "a-gap"), "M6 63v-53h1.5v53z");
  EXPECT_EQ(pathOf(svg, 0, "a-line a-lux"), "M0 10h1.5v50.5h3v-25.2h1.5M7.5 10h1.5");
  EXPECT_EQ(pathOf(svg, 1, "a-gap"), "");
  EXPECT_EQ(pathOf(svg, 0, "a-marker1"), "M212.9 1L220.6 1L216.8 8z");
  EXPECT_EQ(pathOf(svg, 0, "a-marker2") + pathOf(svg, 1, "a-marker1"), "");
  EXPECT_EQ(pathOf(svg, 1, "a-marker2"), "M104.9 8L112.6 8L108.8 1z");
  EXPECT_EQ(pathOf(svg, 0, "a-drop"), "M18.8 10V63");
  EXPECT_EQ(pathOf(svg, 1, "a-drop"), "M317.2 10V63") << "an event without a time stands at the end";
  // Every day stands in a row of its own and at the right of the one above.
  EXPECT_NE(svg.find("<use href=\"#a-1\" transform=\"translate(552 "), std::string::npos);
  EXPECT_EQ(svg.find("<use href=\"#a-0\""), std::string::npos);
}

TEST(Picture, RowsScaleAndZoneAreChosen) {
  PlottedRecording recording = recordingOf(Monday + 10 * Hour, 300, Series(288, 5));
  const std::tuple<int, int, const char*, std::size_t> cases[] = {
      {2, 0, "M180 63", 1}, {2, 12, "M396 63", 1}, {2, 18, "M288 63", 1}, {1, 18, "M576 63", 0}};
  for (const auto& [across, start, bars, references] : cases) {
    recording.Layout = {across, start, 0};
    const std::string svg = svgOf(recording);
    EXPECT_TRUE(pathOf(svg, 0, "a-bars").starts_with(bars)) << start << pathOf(svg, 0, "a-bars");
    EXPECT_EQ(svg.find("<use") != svg.npos, references > 0) << across << start;
    EXPECT_EQ(svg.find("second day after") != svg.npos, across == 2 && start > 0);
  }
  recording.OffWrist.assign(288, false);
  recording.OffWrist[5] = true;
  recording.Activity[5] = 90;
  recording.Layout.ActivityScale = 8;
  recording.DrawnZone = "Europe/Paris";
  const RecordedDays days = daysOf(recording);
  EXPECT_EQ(days.Totals.Activity.mean(), 5) << "off the wrist counts for no mean";
  EXPECT_EQ(findingsOf(recording, days).back(),
            "Rows are 8 counts an epoch high, as asked for: 1 bar (0.3 %) is higher, and cut.");
  const std::string html = reportHtml(recording, days);
  for (const char* words :
       {"time of Europe/Paris", "full height: 8 counts", "leave out the epochs off the wrist"})
    EXPECT_NE(html.find(words), html.npos) << words;
  const PlottedRecording months = recordingOf(Monday, 300, Series(40 * 288, 5));
  for (const std::string& piece : actogramPieces(months, daysOf(months)))
    EXPECT_NE(piece.find("l-all"), piece.npos) << "each printed page has the legend";
}

TEST(Picture, ScalesFitAllButTheHighest) {
  const std::tuple<float, std::size_t, double> cases[] = {
      {0.0F, 1000, 1}, {1130.0F, 1000, 1200}, {0.3F, 1000, 0.3}, {7.0F, 2, 8e6}};
  for (const auto& [usual, count, top] : cases) {
    Series activity(count, usual);
    activity.back() *= 1e6F;
    EXPECT_NEAR(robustMaximum(daysOf(recordingOf(Monday, 300, activity)), &Column::Activity), top, top / 1e6);
  }
  const LightScale lux{"lux", -1, 5};
  EXPECT_EQ(logarithmicShare(0, lux) + logarithmicShare(1e9, lux) * 10 + logarithmicShare(100, lux) * 100,
            60);
}

TEST(Picture, HostileTextsStayText) {
  const std::string hostile = "</title></svg><script>alert(1)</script>\" onload='x' &amp; \x01\xE9";
  PlottedRecording recording = recordingOf(Monday, 60, Series(100, 3));
  recording.Subject = recording.Logger = recording.Zone = recording.LightAxis.Unit = hostile;
  recording.Light = {{LightColour::Lux, Series(100, 3)}};
  recording.Facts = {{hostile, hostile}};
  recording.Warnings = {hostile};
  recording.Events = {{Monday, hostile, Sign::Reset}, {std::nullopt, hostile, Sign::None}};
  for (const std::size_t epochs : {std::size_t{0}, std::size_t{100}}) {
    recording.Epochs = epochs;
    const RecordedDays days = daysOf(recording);
    for (const std::string& text : {actogramSvg(recording, days), reportHtml(recording, days)}) {
      EXPECT_EQ(MarkupCheck::problemOf(text), "");
      EXPECT_NE(text.find("&lt;/title&gt;"), std::string::npos);
      for (const char* live : {"<script", "onload='", "src=", "url(http", "@import", "href=\"h", "<link"})
        EXPECT_EQ(text.find(live), std::string::npos) << live;
    }
  }
}

TEST(Picture, AYearIsSmallAndTheSameEverywhere) {
  PlottedRecording recording = recordingOf(Monday, 15, Series(365 * 5760));
  std::uint32_t noise = 1;
  for (float& value : recording.Activity)
    value = static_cast<float>((noise = noise * 1664525 + 1013904223) >> 16);
  recording.Light = {{LightColour::Red, recording.Activity}, {}, {}};
  recording.Events.assign(5000, {Monday, "Marker Button 1", Sign::None});
  const RecordedDays days = daysOf(recording);
  const std::string svg = actogramSvg(recording, days), html = reportHtml(recording, days);
  EXPECT_LT(std::max(svg.size(), html.size()), 5'000'000U);
  EXPECT_EQ(MarkupCheck::problemOf(svg) + MarkupCheck::problemOf(html), "");
  EXPECT_NE(html.find(">3000 more events"), std::string::npos);
  const std::locale former = std::locale::global(std::locale(std::locale(), new DecimalComma));
  EXPECT_TRUE(actogramSvg(recording, days) == svg && reportHtml(recording, days) == html);
  std::locale::global(former);

  const RecordedDays ages = daysOf(recordingOf(Monday, 32000, Series(20'000, 1)));
  EXPECT_TRUE(ages.Cut && std::ssize(ages.Days) == MostDays);
}

TEST(Picture, EveryRecordingIsDrawn) {
  const Sandbox box;
  for (const std::string model : {"vivid", "kestrin2"}) {
    SCOPED_TRACE(model);
    ASSERT_EQ(box.run("retrieve --model " + model + " --simulate " + model + " --out " + model).Status, 0);
    const std::string svg = box.content(model + "/actogram.svg"), html = box.content(model + "/report.html");
    EXPECT_EQ(MarkupCheck::problemOf(svg) + MarkupCheck::problemOf(html), "");
    EXPECT_NE(pathOf(svg, 1, "a-bars") + pathOf(svg, 1, "a-line a-lux"), "");
    EXPECT_NE(box.run("plot " + model).Err.find("--force"), std::string::npos);
    const Outcome plotted = box.run("plot --json " + model + " --out drawn-" + model);
    EXPECT_EQ(keysOf(Json::parse(plotted.Out)), "written facts findings ");
    EXPECT_TRUE(box.content("drawn-" + model + "/actogram.svg") == svg);
    EXPECT_FALSE(box.has("drawn-" + model + "/raw.bin"));
    const std::string plotThere = "plot " + model + " --out there-" + model + " --rows 24 --scale 900 --tz ";
    EXPECT_NE(box.run(plotThere + "Pacific/Chatham").Err.find("10019"), std::string::npos);
    ASSERT_EQ(box.run(plotThere + "Asia/Tokyo").Status, 0);
    EXPECT_NE(box.content("there-" + model + "/actogram.svg").find("time of Asia/Tokyo"), std::string::npos);
    box.write(model + "/report.html", "old");
    EXPECT_EQ(box.run("plot --force " + model).Status, 0);
    EXPECT_TRUE(box.content(model + "/report.html") == html);
  }
}

TEST(Picture, FoldersWithoutARecording) {
  const Sandbox box;
  ASSERT_EQ(box.run("retrieve --model vivid --simulate vivid --out good").Status, 0);
  const std::string config = box.content("good/config.ini");
  for (const std::string folder : {"half", "broken", "zeros"}) {
    box.write(folder + "/config.ini", folder == "broken" ? "[Configuration Bytes]\n" : config);
    if (folder != "half") box.write(folder + "/raw.bin", std::string(5000, '\0'));
  }
  const std::tuple<std::string, int, std::string> cases[] = {
      {"none", 53, "none is not a folder"},   {"good/raw.bin", 53, "is not a folder"},
      {"sys", 53, "config.ini is missing"},   {"half", 53, "raw.bin is missing"},
      {"broken", 11503, "broken/config.ini"}, {"zeros", 11503, "5000 bytes"}};
  for (const auto& [arguments, failure, words] : cases) {
    const Outcome outcome = box.run("plot --json " + arguments);
    EXPECT_EQ(outcome.Status, 1);
    const Json told = Json::parse(outcome.Out).at("failure");
    EXPECT_EQ(told.at("number"), failure) << told;
    EXPECT_NE(told.at("description").get<std::string>().find(words), std::string::npos) << told;
    EXPECT_FALSE(box.has(arguments + "/actogram.svg"));
  }
  const Outcome outside = box.run("plot --unchecked zeros");
  EXPECT_NE(outside.Out.find("The recording holds no epochs."), std::string::npos) << outside.Err;
  EXPECT_EQ(MarkupCheck::problemOf(box.content("zeros/report.html")), "");
  EXPECT_EQ(box.run("plot --unchecked --force zeros").Status, 1) << "nothing takes the place of a picture";
}

}  // namespace wristlog::picture
