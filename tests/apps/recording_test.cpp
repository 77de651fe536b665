#include <ctime>
#include <set>

#include "apps/sandbox.h"
#include "base/inside.h"
#include "recording/codebook.h"
#include "recording/csv_parts.h"
#include "recording/series_csv.h"
#include "study/study_table.h"
#include "varden/VardenLogger.h"
#include "varden/logging_modes.h"

namespace {

const std::string DecodeKeys =
    "decode_result decode_result_name samples start_time_gmt start_time_gmt_date low_battery marker_count "
    "marker2_count activity light red green blue marker marker2 wrist events ";

constexpr auto LightCell = static_cast<std::size_t>(wristlog::SeriesColumn::Light);

std::vector<std::string> split(const std::string& text, char at) {
  std::vector<std::string> parts;
  std::stringstream stream(text);
  for (std::string part; std::getline(stream, part, at);) parts.push_back(part);
  if (text.ends_with(at) && at == ',') parts.emplace_back();
  return parts;
}

std::time_t secondsOf(const std::string& iso) {
  std::tm time{};
  return ::strptime(iso.c_str(), "%Y-%m-%dT%H:%M:%S", &time) != nullptr ? ::timegm(&time) : -1;
}

std::string rawCsvOf(const std::string& bytes, const std::string& lineEnd) {
  std::string text = "\"QV/HY Varden Logger Raw Data Output File\"" + lineEnd +
                     "\"Subject ID:\",\"1 Address Road\"" + lineEnd + lineEnd +
                     "\"Address\",\"Raw Data Value\"" + lineEnd + lineEnd;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    text += "\"0 (" + std::to_string(i) + ")\",\"" + std::to_string(static_cast<unsigned char>(bytes[i])) +
            "\"" + lineEnd;
  return text;
}

}  // namespace

TEST(Recording, TheDemoReplacesItsOwnFolderOnly) {
  const Sandbox box;
  box.write("demo-recording/series.csv", "mine");
  EXPECT_EQ(box.run("demo").Status, 1);
  EXPECT_EQ(box.content("demo-recording/series.csv"), "mine");
  EXPECT_EQ(box.run("demo --force").Status, 0);
  const Outcome again = box.run("demo --json");
  EXPECT_EQ(Json::parse(again.Out), Json::parse(box.content("demo-recording/recording.json")));
  box.write("demo-recording/notes.txt", "mine");
  EXPECT_EQ(Json::parse(box.run("demo --json").Out).at("failure").at("number"), 58);
}

TEST(Recording, SeriesHoldsEveryEpochOnceAcrossAChangeOfTheClocks) {
  const Sandbox box;
  ASSERT_EQ(box.run("demo").Status, 0);
  const auto rows = split(box.content("demo-recording/series.csv"), '\n');
  EXPECT_EQ(rows.at(0) + "\n", wristlog::headingOf(wristlog::seriesFields()));
  const std::time_t change = secondsOf("2026-03-08T07:00:00Z");
  std::time_t before = 0;
  int changes = 0;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const auto cells = split(rows[i], ',');
    ASSERT_EQ(cells.size(), wristlog::seriesFields().size()) << rows[i];
    ASSERT_EQ(cells[0] + cells[1], "V0012345Demo");
    const std::time_t utc = secondsOf(cells[3]);
    ASSERT_EQ(utc - before, i > 1 ? 60 : utc) << rows[i];
    const bool daylight = utc >= change;
    ASSERT_EQ(cells[2].substr(19), daylight ? "-04:00" : "-05:00") << rows[i];
    ASSERT_EQ(secondsOf(cells[2]) - utc, daylight ? -4 * 3600 : -5 * 3600) << rows[i];
    if (daylight && before < change) ++changes;
    before = utc;
  }
  EXPECT_EQ(changes, 1) << "the week of the demo has the change in it";

  const Json document = Json::parse(
      box.run("decode --json --config demo-recording/config.ini --raw demo-recording/raw.bin").Out);
  EXPECT_EQ(keysOf(document), DecodeKeys);
  const Json& light = document.at("light");
  ASSERT_EQ(light.size(), rows.size() - 1);
  EXPECT_TRUE(document.at("red").empty());
  for (std::size_t i = 0; i < light.size(); ++i) {
    const std::string cell = split(rows[i + 1], ',').at(LightCell);
    ASSERT_EQ(light[i].is_null(), cell.empty()) << rows[i + 1];
    ASSERT_EQ(light[i].is_null() ? 0 : light[i].get<double>(), cell.empty() ? 0 : std::stod(cell));
  }
}

TEST(Recording, EveryModeFillsColumnsOfItsOwn) {
  using namespace hy_wristlog;
  Class_VardenLogger logger;
  VardenRecord& record = Inside::of(logger).record;
  record.SerialNumber = "V1";
  record.SubjectIdentity = "Ann \"A\", M\u00FCller\r\n";
  record.EpochLength = 60;
  record.StartTimeGMT = 46083;
  record.Samples = 1;
  const std::string whose = "V1,\"Ann \"\"A\"\", M\u00FCller\r\n\",";
  const std::string timed = whose + "2026-03-02T00:00:00+00:00,2026-03-02T00:00:00Z,";
  for (const auto& [device, mode, row] : {std::tuple{KR_QUILLANDER, 2, timed + ",,,,3,4,5,,,,,,,"},
                                          {KR_QUILLANDER, 5, timed + "1,,,2.5,,,,,,,,,,"},
                                          {KR_QUILLANDER, 7, timed + ",,,,,,,3,,,,,,"},
                                          {KR_QUILLANDER, 8, timed + ",,,,,,,,3,4,5,,,"},
                                          {KR_TOLKA, 9, whose + ",,,1,,,,,,,,,,,,"}}) {
    record.DeviceType = device;
    record.AcquisitionMode = static_cast<enmVardenLoggingMode>(mode);
    const SeriesSet has = findLoggingMode(device, record.AcquisitionMode)->samples();
    record.ActivityArray = has & series::Activity ? ActivitySeries{1} : ActivitySeries{};
    record.LightArray = has & series::Light ? LightSeries{2.5F} : LightSeries{};
    record.RedLightArray = has & series::Red ? LightSeries{3} : LightSeries{};
    record.GreenLightArray = has & series::Green ? LightSeries{4} : LightSeries{};
    record.BlueLightArray = has & series::Blue ? LightSeries{5} : LightSeries{};
    std::string table;
    wristlog::addSeriesCsv([&](std::string_view text) { table += text; }, logger);
    EXPECT_EQ(table, wristlog::headingOf(wristlog::seriesFields()) + row + "\n");
  }
}

TEST(Recording, TheCodebooksTellOfEveryColumnAndField) {
  std::string told, listed;
  for (const auto fields : {wristlog::seriesFields(), wristlog::eventFields(), wristlog::recordingFields(),
                            wristlog::studyFields()})
    for (const wristlog::Field& field : fields)
      told.append("| `").append(field.Name).append("` | ").append(field.Unit).append(" | ") +=
          wristlog::rangeOf(field) + " |\n";
  for (const std::string document : {"recordings", "studies"})
    for (const std::string& line :
         split(hy_wristlog::contentOf(TEST_DATA "/../../docs/" + document + ".md"), '\n')) {
      const auto cells = split(line, '|');
      if (line.starts_with("| `") && cells.size() > 4)
        listed += "|" + cells.at(1) + "|" + cells.at(2) + "|" + cells.at(3) + "|\n";
    }
  EXPECT_EQ(listed, told);

  const Sandbox box;
  ASSERT_EQ(box.run("demo --out varden").Status, 0);
  ASSERT_EQ(box.run("legacy retrieve --simulate pendrel27 --out pendrel").Status, 0);
  for (const std::string folder : {"varden", "pendrel"}) {
    SCOPED_TRACE(folder);
    std::set<std::string> fields;
    const Json package = Json::parse(box.content(folder + "/datapackage.json"));
    for (const Json& resource : package.at("resources")) {
      EXPECT_TRUE(box.has(folder + "/" + resource.at("path").get<std::string>()));
      if (!resource.contains("fields")) continue;
      for (const Json& field : resource.at("fields")) fields.insert(field.at("name"));
    }
    const Json facts = Json::parse(box.content(folder + "/recording.json"));
    EXPECT_EQ(facts.at("time_zone_iana"), "America/New_York");
    const auto take = [&](const std::string& name) { EXPECT_EQ(fields.erase(name), 1U) << name; };
    for (const auto& [name, value] : facts.items()) {
      if (!value.is_object()) take(name);
      for (const auto& [member, inner] : value.items())
        if (value.is_object()) take(name + "." + member);
    }
    EXPECT_EQ(fields.size(), 5U) << "those of a part, and of unchecked bytes";
  }
}

TEST(Recording, WhatWasRetrievedDecodesToTheSameEverywhere) {
  Sandbox box;
  const std::string elsewhere = box.Folder.string() + "/sys";
  for (const std::string model : {"vivid", "kestrin2"}) {
    SCOPED_TRACE(model);
    const Outcome retrieved =
        box.run("retrieve --json --model " + model + " --simulate " + model + " --out " + model);
    ASSERT_EQ(retrieved.Status, 0) << retrieved.Err;
    EXPECT_EQ(retrieved.Err, "");
    const Json document = Json::parse(retrieved.Out);
    EXPECT_EQ(keysOf(document),
              DecodeKeys +
                  "bytes_received bytes_in_logger part return_code return_code_meaning ignored_warnings "
                  "low_battery_detected logger subject ");
    EXPECT_EQ(document.at("logger").at("subject_identity"), document.at("subject").at("identity"));
    const std::string raw = box.content(model + "/raw.bin"), config = box.content(model + "/config.ini");
    EXPECT_EQ(document.at("bytes_received"), raw.size());
    box.write("crlf.csv", rawCsvOf(raw, "\r\n"));
    box.write("lf.csv", rawCsvOf(raw, "\n"));
    for (const auto& [from, environment] :
         {std::pair{model + "/raw.bin", std::string("TZ=Asia/Tokyo LC_ALL=C")},
          {"crlf.csv", "TZ=UTC HOME=" + elsewhere + " XDG_CONFIG_HOME=" + elsewhere},
          {"lf.csv", ""}}) {
      box.Environment = environment;
      const std::string into = "again-" + model + from.substr(0, 2);
      const Outcome decoded =
          box.run("decode --json --config " + model + "/config.ini --raw " + from + " --out " + into);
      ASSERT_EQ(decoded.Status, 0) << decoded.Out;
      const Json again = Json::parse(decoded.Out);
      for (const auto& [key, value] : again.items()) EXPECT_EQ(value, document.at(key)) << key;
      for (const char* name : {"/series.csv", "/events.csv", "/recording.json", "/datapackage.json",
                               "/raw.bin", "/config.ini", "/actogram.svg", "/report.html"})
        EXPECT_TRUE(!box.content(into + name).empty() &&
                    box.content(into + name) == box.content(model + name))
            << name;
    }
    box.write("old.ini", config.substr(0, config.find("[Read Only")));
    const std::string old = "decode --json --config old.ini --raw " + model + "/raw.bin";
    EXPECT_EQ(Json::parse(box.run(old).Out).at("decode_result"), 0);
    EXPECT_EQ(Json::parse(box.run(old + " --now 2027-01-01").Out).at("decode_result"),
              model == "vivid" ? 16 : 0);
  }
}

TEST(Recording, DamagedFilesAreNamed) {
  const Sandbox box;
  ASSERT_EQ(box.run("retrieve --model vivid --simulate vivid --out good").Status, 0);
  std::string config = box.content("good/config.ini"), raw = box.content("good/raw.bin");
  const std::string held = std::to_string(raw.size());
  box.write("cut.ini", config.substr(0, config.find("Bytes=") + 206));
  std::string volts = config;
  box.write("volts.ini", volts.replace(volts.find("Voltage=") + 8, 1, "x"));
  config[config.find("Bytes=") + 20] ^= 1;
  box.write("flipped.ini", config);
  box.write("empty", "");
  box.write("half.bin", raw.substr(0, 2048));
  raw[3000] ^= 1;
  box.write("other.bin", raw);
  box.write("short.csv", rawCsvOf("", "").substr(0, 60));
  std::filesystem::create_directory(box.Folder / "links");
  std::filesystem::create_symlink("../good/series.csv", box.Folder / "links/series.csv");
  // clang-format off
  const struct {
    std::string Config, Raw;
    int Failure;
    std::string Named, Out = "--out new/folder";
  } cases[] = {
      {"none.ini", "good/raw.bin", 53, "none.ini"}, {"empty", "good/raw.bin", 11503, "empty"},
      {"cut.ini", "good/raw.bin", 11505, "cut.ini"}, {"flipped.ini", "good/raw.bin", 11505, "flipped.ini"},
      {"volts.ini", "good/raw.bin", 13, "volts.ini: Type mismatch: Battery Voltage: \"x."},
      {"good/config.ini", "none.bin", 53, "none.bin"}, {"good/config.ini", "/dev/zero", 75, "/dev/zero"},
      {"good/config.ini", "short.csv", 13, "Address"},
      {"good/config.ini", "half.bin", 11503, "2048 bytes are there, and the logger held " + held},
      {"good/config.ini", "other.bin", 11503, "SHA-256"},
      {"good/config.ini", "good/raw.bin", 58, "--force", "--out good"},
      {"good/config.ini", "good/raw.bin", 75, "links/series.csv is in the way", "--force --out links"}};
  // clang-format on
  for (const auto& each : cases) {
    SCOPED_TRACE(each.Config + " " + each.Raw);
    const Outcome outcome =
        box.run("decode --json --config " + each.Config + " --raw " + each.Raw + " " + each.Out);
    EXPECT_EQ(outcome.Status, 1);
    const Json failure = Json::parse(outcome.Out).at("failure");
    EXPECT_EQ(failure.at("number"), each.Failure) << failure;
    EXPECT_NE(failure.at("description").get<std::string>().find(each.Named), std::string::npos) << failure;
    EXPECT_FALSE(box.has("new") || box.has("links/raw.bin"));
  }
}

TEST(Recording, AFileIsWholeOrNotThere) {
  const Sandbox box;
  const std::string retrieve = "retrieve --model vivid --simulate vivid --out full";
  ASSERT_EQ(box.run(retrieve).Status, 0);
  // 100 blocks of 512 bytes: enough for the raw recording, not for the series. Those of the former one are
  // gone.
  const Outcome full = box.run(retrieve + " --force", "", "ulimit -f 100;");
  EXPECT_EQ(full.Status, 1);
  EXPECT_NE(full.Err.find("still holds"), std::string::npos) << full.Err;
  for (const auto& entry : std::filesystem::directory_iterator(box.Folder / "full")) {
    const std::string name = entry.path().filename();
    EXPECT_TRUE(name == "raw.bin" || name == "config.ini") << name;
  }
  box.write("file", "");
  for (const std::string folder : {"file", "file/in", "/proc/none"})
    EXPECT_EQ(box.run("retrieve --model vivid --simulate vivid --out " + folder).Status, 1) << folder;
}
