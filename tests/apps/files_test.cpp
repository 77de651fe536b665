#include "apps/sandbox.h"

namespace {

/// A folder in which a Vivid's and a Kestrin 2's recordings lie.
struct Files : testing::Test {
  void SetUp() override {
    for (const std::string model : {"vivid", "kestrin2"})
      ASSERT_EQ(box.run("retrieve --model " + model + " --simulate " + model + " --out " + model).Status, 0);
  }
  Json json(const std::string& arguments) const { return Json::parse(box.run(arguments + " --json").Out); }
  Sandbox box;
};

std::size_t linesOf(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace

TEST_F(Files, EachCommandWritesItsFile) {
  const std::string raw = box.content("vivid/raw.bin");
  const Json dumped = json("raw dump vivid --out dump.csv");
  EXPECT_EQ(keysOf(dumped), "file recorded_bytes device_serial_number ");
  EXPECT_EQ(dumped.at("recorded_bytes"), raw.size());
  EXPECT_EQ(linesOf(box.content("dump.csv")), raw.size() + 11);
  EXPECT_EQ(json("raw load dump.csv --out again.bin").at("recorded_bytes"), raw.size());
  EXPECT_EQ(box.content("again.bin"), raw);

  const Json report = json("report --config vivid/config.ini --raw dump.csv --out report.csv");
  EXPECT_EQ(keysOf(report),
            "file recorded_bytes device_serial_number decode_result decode_result_name part samples ");
  EXPECT_NE(box.content("report.csv").find("\"Illuminance (Photopic Lux)\",\"Wrist Status (On/Off)\"\r\n"),
            std::string::npos);
  const Json events = json("decode --config vivid/config.ini --raw vivid/raw.bin").at("events");
  EXPECT_EQ(linesOf(box.content("report.csv")), report.at("samples").get<std::size_t>() + events.size() + 12);

  box.write("half.bin", raw.substr(0, 2048));
  for (const std::string command : {"raw dump", "report", "krd", "light-test", "decode"}) {
    SCOPED_TRACE(command);
    const std::string half =
        command + " --config vivid/config.ini --raw half.bin --out half-" + command.substr(0, 3);
    const Outcome refused = box.run(half);
    EXPECT_EQ(refused.Status, 1);
    EXPECT_NE(refused.Err.find("2048 bytes"), std::string::npos) << refused.Err;
    EXPECT_FALSE(box.has("half-" + command.substr(0, 3)));
    const Outcome unchecked = box.run(half + " --unchecked");
    EXPECT_EQ(unchecked.Status, 0) << unchecked.Err;
    EXPECT_TRUE(unchecked.Err.starts_with("Warning: half.bin")) << unchecked.Err;
  }

  const Outcome krd = box.run("krd kestrin2 --out activity.krd");
  EXPECT_EQ(krd.Status, 0);
  EXPECT_NE(krd.Err.find("more than activity"), std::string::npos);
  EXPECT_TRUE(box.content("activity.krd").starts_with("2"));
  EXPECT_EQ(box.run("light-test kestrin2 --out light.csv").Status, 0);
  EXPECT_TRUE(box.content("light.csv").starts_with("\"QV/HY Tolka Logger Light Test"));
  const Outcome foreign = box.run("light-test vivid --json --out foreign.csv");
  EXPECT_NE(foreign.Err.find("no Kestrin 2"), std::string::npos);
  EXPECT_EQ(Json::parse(foreign.Out).at("kestrin2"), false);
}

TEST_F(Files, SeveralRecordingsAreTakenAtOnce) {
  const Outcome table = box.run("decode vivid none kestrin2/ --out -");
  const std::string vivid = box.content("vivid/series.csv"), second = box.content("kestrin2/series.csv");
  EXPECT_EQ(table.Out, vivid + second.substr(second.find('\n') + 1));
  EXPECT_EQ(table.Status, 1);
  EXPECT_TRUE(table.Err.starts_with("none: none is not a folder")) << table.Err;
  EXPECT_EQ(std::count(table.Err.begin(), table.Err.end(), '\n'), 1);
  const Outcome beginning = box.run("decode vivid kestrin2 --out -", "| head -c 6");
  EXPECT_EQ(beginning.Out + beginning.Err, "logger");

  const Json decoded = json("decode vivid kestrin2 --out both").at("recordings");
  EXPECT_EQ(decoded.at(1).at("recording"), "kestrin2");
  EXPECT_EQ(box.content("both/vivid/series.csv") + box.content("both/kestrin2/series.csv"), vivid + second);
  EXPECT_NE(box.run("decode vivid both/vivid --out x").Err.find("both be written to x/vivid"),
            std::string::npos);
  EXPECT_EQ(json("plot vivid none --out drawn").at("recordings").at(1).at("failure").at("number"), 53);
  EXPECT_TRUE(box.has("drawn/vivid/report.html"));
  const std::string reports = box.run("report vivid kestrin2").Out;
  EXPECT_EQ(reports, "vivid:\n" + box.run("report vivid --force").Out + "kestrin2:\n" +
                         box.run("report kestrin2 --force").Out);
}

TEST_F(Files, WhatTheLibraryTellsStandsOnStandardError) {
  std::string raw = box.content("vivid/raw.bin");
  box.write("odd.bin", raw + std::string("\xFD\x04\0\0\0\0\0", 7));
  const Outcome report =
      box.run("report --json --unchecked --config vivid/config.ini --raw odd.bin --out report.csv");
  EXPECT_EQ(report.Status, 0);
  EXPECT_NE(report.Err.find("Logger memory is full. Proceeding with decode...\n"), std::string::npos);
  EXPECT_EQ(Json::parse(report.Out).at("decode_result"), 4);
}

TEST_F(Files, ConfigurationsAreShownEditedAndTakenBack) {
  const Json shown = json("config show vivid").at("config");
  EXPECT_EQ(shown.size(), 44U);
  EXPECT_EQ(shown.at("Kestrin Model"), "Quillander (2)");
  EXPECT_EQ(shown.at("Firmware Version"), "01.01.0007") << "which is no part of the configuration's bytes";
  EXPECT_NE(box.run("config show --config vivid/config.ini").Out.find("\nEpoch Length: 60\n"),
            std::string::npos);
  const Outcome docked = box.run("config show --model kestrin2 --simulate kestrin2 --console");
  EXPECT_NE(docked.Out.find("Kestrin Model: Tolka (1)\n"), std::string::npos);
  EXPECT_NE(docked.Err.find("show config"), std::string::npos);
  EXPECT_EQ(docked.Err.find("clipboard"), std::string::npos) << "a question that nobody hears";

  ASSERT_EQ(box.run("config export vivid --out edit.ini").Status, 0);
  const std::string exported = box.content("edit.ini");
  const Json same = json("config import vivid --ini edit.ini --out same.ini --image same.bin");
  EXPECT_TRUE(same.at("changes").empty()) << same;
  EXPECT_EQ(box.content("same.ini"), exported);
  ASSERT_EQ(box.run("config image vivid --out image.bin").Status, 0);
  EXPECT_EQ(box.content("image.bin"), box.content("same.bin"));
  EXPECT_EQ(box.content("image.bin").size(), 256U);

  std::string edited = exported;
  edited.replace(edited.find("Epoch Length=60"), 15, "Epoch Length=30");
  box.write("edit.ini", edited);
  const Json changed = json("config import vivid --ini edit.ini --out new.ini");
  EXPECT_EQ(changed.at("changes").dump(), R"([{"item":"Epoch Length","from":"60","to":"30"}])");
  const Json before = json("decode --config vivid/config.ini --raw vivid/raw.bin");
  const Json after = json("decode --config new.ini --raw vivid/raw.bin");
  EXPECT_EQ(after.at("decode_result"), before.at("decode_result"));
  EXPECT_EQ(json("config show --config new.ini").at("config").at("Epoch Length"), "30");

  edited.replace(edited.find("Acquisition Mode=5"), 18, "Acquisition Mode=9");
  box.write("edit.ini", edited);
  ASSERT_EQ(box.run("config import vivid --ini edit.ini --out fast.ini").Status, 0);
  const std::string report = "report --config fast.ini --raw vivid/raw.bin --out fast.csv";
  EXPECT_NE(box.run(report).Err.find("fast.csv is not whole"), std::string::npos);
  EXPECT_EQ(box.run(report + " --force").Err.find("not whole"), std::string::npos) << "it stood before";
}

TEST_F(Files, WhatCannotBeDoneIsSaid) {
  box.write("edit.ini", "[Config Data]\nResets=1\n");
  ASSERT_EQ(box.run("config export vivid --out wrong.ini").Status, 0);
  std::string wrong = box.content("wrong.ini"), wide = "\xFF\xFE";
  box.write("ansi.ini", wrong + "; M\xFCller\r\n");
  for (const char c : wrong) (wide += c) += '\0';
  box.write("wide.ini", wide);
  wrong.replace(wrong.find("Resets=0"), 8, "Resets=x");
  box.write("wrong.ini", wrong);
  box.write("empty", "");
  box.write("empty.bin", std::string("\xFD\x01\0\0\0\0", 6));
  std::filesystem::create_directory(box.Folder / "folder");
  ASSERT_EQ(box.run("config export vivid --out edited.ini").Status, 0);
  std::filesystem::create_directory_symlink(box.Folder / "vivid", box.Folder / "link");
  const std::string raw = box.content("vivid/raw.bin"), edited = box.content("edited.ini");
  box.write("damaged.csv", "\"QV/HY Varden Logger Raw Data Output File\"\r\n\"Address\"\r\n\"1\",\"\"\r\n");
  // clang-format off
  const std::tuple<std::string, int, const char*> cases[] = {
      {"raw dump none --out x", 53, "none is not a folder"}, {"raw dump vivid --out wrong.ini", 58, "--force"},
      {"raw dump vivid --out folder --force", 75, "folder"},
      {"raw dump vivid --out link/raw.bin --force", 5, "link/raw.bin"},
      {"config export vivid --out vivid/config.ini --force", 5, "vivid/config.ini"},
      {"config export kestrin2 --out vivid/raw.bin --force", 75, "no INI file"},
      {"config import vivid --ini edited.ini --out edited.ini --force", 5, "edited.ini"},
      {"config import vivid --ini edited.ini --out x --image ./x", 5, "x"},
      {"raw load damaged.csv --out x", 13, "damaged.csv: Type mismatch: \"\" is no byte in line 3"},
      {"light-test --config kestrin2/config.ini --raw empty.bin --unchecked --out x", 11506, "too short"},
      {"report --config vivid/config.ini --raw empty --out x", 11503, "empty"},
      {"config import vivid --ini edit.ini --out x", 11503, "\"Subject Identity\" and 29 more"},
      {"config import vivid --ini wrong.ini --out x", 13, "Resets: \"x\""},
      {"config import vivid --ini ansi.ini --out x", 13, "ansi.ini is in another encoding, such as code page 1252"},
      {"config import vivid --ini wide.ini --out x", 13, "wide.ini is in UTF-16"},
      {"config show --config wide.ini", 13, "wide.ini is in UTF-16"},
      {"config show --model vivid", 10003, "Docking Station Not Found"}};
  // clang-format on
  for (const auto& [arguments, number, named] : cases) {
    SCOPED_TRACE(arguments);
    const Outcome outcome = box.run(arguments + " --json");
    EXPECT_EQ(outcome.Status, 1);
    const Json failure = Json::parse(outcome.Out).at("failure");
    EXPECT_EQ(failure.at("number"), number) << failure;
    EXPECT_NE(failure.at("description").get<std::string>().find(named), std::string::npos) << failure;
    EXPECT_FALSE(std::filesystem::exists(box.Folder / "x"));
  }
  EXPECT_EQ(box.content("wrong.ini"), wrong);
  EXPECT_EQ(box.content("vivid/raw.bin"), raw);
  EXPECT_EQ(box.content("edited.ini"), edited);
  for (const char* usage :
       {"raw", "report --out x", "report vivid kestrin2 --out x", "report vivid --raw b --out x",
        "decode vivid --out - --json", "config show vivid --model vivid", "config import vivid --out x",
        "krd vivid --out ''"})
    EXPECT_EQ(box.run(usage).Status, 2) << usage;
}
