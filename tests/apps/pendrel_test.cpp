#include <pty.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "apps/desk.h"
#include "apps/markup_check.h"
#include "apps/sandbox.h"
#include "engineering/saved_pendrel.h"
#include "words/pendrel_words.h"

namespace {

namespace sim = hy_wristlog::simulator;
namespace engineering = hy_wristlog::engineering;
using namespace std::chrono_literals;

std::string linesBefore(const std::string& text, std::size_t count) {
  std::size_t end = 0;
  while (count-- > 0 && end < text.size()) end = text.find('\n', end) + 1;
  return text.substr(0, end);
}

TEST(Legacy, ASearchTellsWhichPortsItCouldNotOpen) {
  const Sandbox box;
  int user = -1;
  int line = -1;
  char device[128];
  ASSERT_EQ(::openpty(&user, &line, device, nullptr, nullptr), 0);
  ASSERT_EQ(::flock(line, LOCK_EX), 0);
  box.write("Docks.INI", std::string("[Dock 1]\nCOMport=60\nDevice=") + device + "\n");
  const Outcome search = box.run("legacy find-port");
  EXPECT_EQ(search.Status, 1);
  EXPECT_NE(search.Err.find(std::string("COM60 (") + device + ") is in use by another program"),
            std::string::npos)
      << search.Err;
  ::close(line);
  ::close(user);
}

TEST(Legacy, ARetrievedRecordingIsSevenFilesAndOneDocument) {
  const Sandbox box;
  for (const std::string model : {"pendrel13", "pendrel14", "pendrel27"}) {
    SCOPED_TRACE(model);
    const std::string command = "legacy retrieve --json --simulate " + model + " --out " + model;
    const Outcome outcome = box.run(command);
    ASSERT_EQ(outcome.Status, 0) << outcome.Err;
    const Json document = Json::parse(outcome.Out);
    EXPECT_EQ(
        keysOf(document),
        "return_code return_code_meaning samples start_time_gmt start_time_gmt_date marker_count "
        "activity steps marker bytes_received bytes_in_logger part battery_life_remaining logger subject ");
    const auto samples = document.at("samples").get<std::size_t>();
    EXPECT_EQ(document.at("activity").size(), samples);
    EXPECT_EQ(document.at("steps").size(), model == "pendrel27" ? samples : 0U);
    EXPECT_EQ(document.at("subject").at("identity"), "Subject 17");
    EXPECT_EQ(document.at("logger").at("start_date"), "2026-03-02");
    EXPECT_EQ(document.at("logger").at("start_time"), "09:01:00");

    const std::string series = box.content(model + "/series.csv");
    const std::string rest = model == "pendrel27" ? "55,,0,,,,,,,,,,,\n" : "55,,,,,,,,,,,,,\n";
    EXPECT_EQ(linesBefore(series, 2).substr(series.find('\n') + 1),
              document.at("logger").at("serial_number").get<std::string>() +
                  ",Subject 17,2026-03-02T09:01:00-05:00,2026-03-02T14:01:00Z," + rest);
    EXPECT_EQ(static_cast<std::size_t>(std::count(series.begin(), series.end(), '\n')), samples + 1);
    EXPECT_EQ(box.content(model + "/raw.bin").size() % 4096, 0U);
    EXPECT_EQ(box.content(model + "/setup.txt").find("Subject 17"), 0U);
    const Json summary = Json::parse(box.content(model + "/recording.json"));
    EXPECT_EQ(summary.at("samples"), samples);
    EXPECT_EQ(summary.at("start_local"), "2026-03-02T09:01:00");

    const std::string picture = box.content(model + "/actogram.svg");
    const std::string report = box.content(model + "/report.html");
    for (const std::string& text : {picture, report}) {
      EXPECT_EQ(MarkupCheck::problemOf(text), "");
      EXPECT_NE(text.find("Mon 2026-03-02"), std::string::npos) << "the first day";
      EXPECT_EQ(text.find("steps an epoch") != text.npos, model == "pendrel27");
    }
    EXPECT_NE(report.find("2026-03-02 09:01"), std::string::npos) << "in local time";

    const Outcome again = box.run(command);
    EXPECT_EQ(again.Status, 1);
    EXPECT_EQ(Json::parse(again.Out).at("failure").at("number"), 58);
    EXPECT_EQ(box.run(command + " --force").Status, 0);
  }
}

/// A worn logger in its reader, and a folder in which the program runs elsewhere.
struct Worn : Desk<sim::PendrelBench> {
  explicit Worn(sim::PendrelModel model, std::chrono::hours worn = 3 * 24h) : Desk(benchOf(model)) {
    bench.Logger->setUp(sim::ordinaryPendrelSetup(*bench.World, 60, true));
    bench.Logger->wear(worn);
  }
  Told retrieve(const std::string& folder, const std::string& options = "") const {
    return runHere("legacy retrieve --port 1 --out " + (box.Folder / folder).string() + options);
  }
  std::string content(const std::string& name) const { return box.content(name); }
  static sim::PendrelBench benchOf(sim::PendrelModel model) {
    sim::PendrelBenchOptions options;
    options.Logger.Model = model;
    return sim::makePendrelBench(options);
  }
  Sandbox box;
};

constexpr sim::PendrelModel Models[] = {sim::PendrelModel::Plain, sim::PendrelModel::Checksums,
                                        sim::PendrelModel::Steps};

TEST(Legacy, WhatWasRetrievedDecodesToTheSameEverywhere) {
  for (const sim::PendrelModel model : Models) {
    for (const bool repaired : {false, true}) {
      SCOPED_TRACE(std::to_string(static_cast<int>(model)) + (repaired ? ", repaired" : ""));
      Worn desk(model);
      if (repaired) desk.bench.Logger->Faults.SetupLines = {{1, "?"}, {2, "07"}, {5, "?"}, {6, "?"}};
      if (repaired && model == sim::PendrelModel::Steps) desk.bench.Logger->Faults.SetupLines[4] = "?";
      const Told told = desk.retrieve("p", repaired ? " --repair" : "");
      ASSERT_EQ(told.Status, 0) << told.all();
      const Sandbox& box = desk.box;
      desk.box.Environment = "TZ=Asia/Tokyo LC_ALL=C";
      const Outcome again = box.run("decode p --out again");
      ASSERT_EQ(again.Status, 0) << again.Err;
      EXPECT_EQ(again.Out.find("The recording is whole. "), 0U) << again.Out;
      for (const auto& entry : std::filesystem::directory_iterator(box.Folder / "p")) {
        const std::string name = entry.path().filename();
        EXPECT_EQ(box.content("again/" + name), box.content("p/" + name)) << name;
      }
      const std::string series = box.content("p/series.csv"), config = box.content("p/config.ini");
      std::string damaged = config;
      damaged[damaged.find("Bytes=") + 6] ^= 1;
      box.write("p/config.ini", damaged);
      EXPECT_NE(box.run("decode p").Err.find("set-up answer is not the one that was retrieved"),
                std::string::npos);

      std::filesystem::remove(box.Folder / "p/config.ini");
      const Outcome older = box.run("decode p --out older");
      EXPECT_EQ(older.Status, repaired ? 1 : 0) << older.Err;
      if (repaired)
        EXPECT_NE(older.Err.find("p/setup.txt: The set-up answer does not tell the "), older.Err.npos)
            << older.Err;
      else
        EXPECT_TRUE(older.Out.starts_with("As many bytes ") && box.content("older/series.csv") == series);
    }
  }
}

TEST(Legacy, ARecordingOfNothingDecodesToTheSameToo) {
  Worn desk(sim::PendrelModel::Steps, 0h);
  const Told told = desk.retrieve("p");
  EXPECT_EQ(told.Status, 0) << told.all();
  expectIn(told.Out, {"The logger has recorded nothing yet; its one value is none."});
  const Outcome again = desk.box.run("decode p --out again");
  EXPECT_EQ(again.Status, 0) << again.Err;
  EXPECT_EQ(desk.box.content("again/series.csv"), desk.box.content("p/series.csv"));
}

TEST(Legacy, OfABrokenRetrievalTheBeginningIsKept) {
  for (const sim::PendrelModel model : Models) {
    SCOPED_TRACE(static_cast<int>(model));
    Worn desk(model);
    const auto breakAt = [&](std::int32_t block) { desk.bench.Logger->Faults.ShortBlock = {block, 1}; };
    const Sandbox& box = desk.box;
    breakAt(1);
    const Told told = desk.retrieve("p");
    EXPECT_EQ(told.Status, 1);
    expectIn(told.Err,
             {"The beginning of the recording came: 4096 of ", " bytes, until 2026-", "p' show it"});
    EXPECT_FALSE(box.has("p/raw.bin") || box.has("p/series.csv"));
    const Outcome decoded = box.run("decode p --out p --force");
    EXPECT_EQ(decoded.Out.find("Only the beginning of a recording: 4096 of "), 0U) << decoded.Err;
    EXPECT_EQ(Json::parse(box.content("p/recording.json")).at("part"), true);
    EXPECT_NE(box.content("p/actogram.svg").find("Beginning of a recording of "), std::string::npos);
    EXPECT_EQ(box.run("report p").Status, 0);
    EXPECT_EQ(box.run("report p --out x.csv").Status, 1) << "its name would not tell that it is of a part";
    const std::string part = box.content("p/series.partial.csv");

    breakAt(1);
    expectIn(desk.retrieve("p").Err, {"was left as it is: it holds as much of the recording already"});
    expectIn(desk.retrieve("p").Out, {"Written to "});
    const std::string series = box.content("p/series.csv");
    EXPECT_TRUE(series.starts_with(part) && part.size() > 4000) << part.size();
    for (const std::string file : {"raw.partial.bin", "series.partial.csv", "report.partial.csv"})
      EXPECT_FALSE(box.has("p/" + file)) << file;

    auto cut = engineering::savedRecording(box.Folder / "p/config.ini", box.Folder / "p/raw.bin");
    const auto whole = engineering::openPendrel(cut);
    engineering::decode(*whole);
    for (std::size_t end = 4300; end > 4000; --end) {
      cut.Raw.resize(end);
      const auto beginning = engineering::openPendrel(cut);
      engineering::decode(*beginning);
      const auto begins = [](const auto& shorter, const auto& longer) {
        return shorter.size() < longer.size() && std::equal(shorter.begin(), shorter.end(), longer.begin());
      };
      ASSERT_TRUE(begins(beginning->Get_ActivityArray(), whole->Get_ActivityArray()));
      ASSERT_TRUE(begins(beginning->Get_MarkerArray(), whole->Get_MarkerArray()));
      ASSERT_TRUE(model != sim::PendrelModel::Steps ||
                  begins(beginning->Get_StepsArray(), whole->Get_StepsArray()));
      ASSERT_GE(beginning->Get_Samples(), 1900);
    }
    for (const std::string command : {"krd p --out x", "config show p"}) {
      const Outcome refused = box.run(command);
      EXPECT_EQ(refused.Status, 1);
      EXPECT_NE(refused.Err.find("recording of a Pendrel logger"), std::string::npos) << refused.Err;
    }
    EXPECT_EQ(box.run("raw dump p --out dump.csv").Status, 0);
    EXPECT_EQ(box.run("decode --config p/config.ini --raw dump.csv --out -").Out, series);
    EXPECT_EQ(box.run("decode p p --out -").Out, series + series.substr(series.find('\n') + 1));
    EXPECT_EQ(box.run("plot p --out drawn").Status, 0);
    EXPECT_EQ(box.content("drawn/report.html"), box.content("p/report.html"));
  }
}

TEST(Legacy, EachCommandSaysWhatCameOfIt) {
  const Sandbox box, ofJson;
  const std::string status =
      "com_port model device_type memory_size_kb max_bytes_used max_recording_days retrieval problems logger "
      "setup_text ";
  const struct {
    std::string Command;
    int Status;
    std::string Out, Err, Keys{};
  } cases[] = {
      {"find-port --simulate pendrel13", 0, "The Pendreader is on COM1, which is remembered.\n", "",
       "com_port "},
      {"status --simulate pendrel27", 0, "Activity and steps, a value every 60 seconds", "", status},
      {"configure --simulate pendrel27 --erase --mode 2 --epoch 30 --identity Zoë --gender F", 0,
       "  Who      Zoë, gender F\n  Mode     2, activity and steps\n  Epoch    30 seconds\n  Start    "
       "2026-03-05 09:0",
       "", "battery_life_remaining device_serial_number start_time_local records_steps recording "},
      {"configure --simulate pendrel13 --erase --mode 2 --epoch 30 --gender M", 0,
       "  Who      C8B1234, gender M", "This model counts no steps"},
      {"configure --simulate pendrel13 --erase --mode 1 --epoch 15 --zone est --start '2026-03-06 10:00:30'",
       0, "Start    2026-03-06 10:00 -05:00", ""},
      {"configure --simulate pendrel13 --erase --mode 1 --epoch 15 --start 2026-03-20", 1, "",
       "Code 10007: "},
      {"battery-date --simulate pendrel14 2026-02-01", 0, "has a battery of 2026-02-01: about 148 days", "",
       "battery_date battery_life_remaining "},
      {"export-krc --simulate pendrel27 out.krc", 0, "Written to out.krc.\n", "", "file "},
      {"export-krc --simulate pendrel27 out.krc", 1, "", "out.krc exists"},
      {"export-krc --simulate pendrel27 .out/out.krc", 1, "", "(failure 76)"},
      {"status", 1, "", "Code 10001: No port is remembered", status},
      {"retrieve --out none --port 50", 1, "", "Code 10008: There is no COM50"},
      {"status", 1, "", "Code 10008: There is no COM50"},
      {"status --port 1 --search", 2, "", "excludes"},
      {"battery-date --simulate pendrel14 2031-01-01", 2, "", "1930-01-01 to 2029-12-31"},
      {"configure --simulate pendrel14 --mode 3 --epoch 15", 2, "", ""},
      {"configure --simulate pendrel14 --mode 1 --epoch 15 --height 6553.6", 2, "", "from 0 to 6553.5"},
      {"configure --simulate pendrel14 --mode 1 --epoch 15 --guid 12", 2, "", "32 hexadecimal digits"},
      {"export-krc --simulate pendrel14 folder/", 2, "", "names no file"},
      {"", 2, "", ""}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.Command);
    const Outcome outcome = box.run("legacy " + each.Command);
    EXPECT_EQ(outcome.Status, each.Status) << outcome.Err;
    EXPECT_NE(outcome.Out.find(each.Out), std::string::npos) << outcome.Out;
    EXPECT_NE(outcome.Err.find(each.Err), std::string::npos) << outcome.Err;
    EXPECT_EQ(outcome.Status == 0, !outcome.Out.empty());
    if (each.Keys.empty()) continue;
    EXPECT_EQ(keysOf(Json::parse(ofJson.run("legacy " + each.Command + " --json").Out)),
              "return_code return_code_meaning " + each.Keys);
  }
  EXPECT_EQ(box.content("out.krc").find("Subject 17 "), 0U);
}

TEST(Legacy, StatusNamesWhatIsUnknownAsSuch) {
  hy_wristlog::PendrelDetails details;
  details.MemorySizeKB = -1;
  hy_wristlog::Class_Pendrel logger;
  for (const auto unknown :
       {&hy_wristlog::Class_Pendrel::Let_StartDate, &hy_wristlog::Class_Pendrel::Let_StartTime,
        &hy_wristlog::Class_Pendrel::Let_BatteryDate})
    (logger.*unknown)(-1);
  std::ostringstream out;
  wristlog::tellStatus(wristlog::Speech(out), logger, details);
  const std::string words = out.str();
  for (const char* told : {"Memory of unknown size", "! The size of the memory is not known",
                           "! The start is unknown", "! The date of its battery is unknown"})
    EXPECT_NE(words.find(told), std::string::npos) << told;
  EXPECT_EQ(words.find("-1"), std::string::npos) << words;
}

}  // namespace
