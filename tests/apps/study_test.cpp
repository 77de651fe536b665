#include "study/study.h"

#include <atomic>
#include <chrono>
#include <set>
#include <sstream>

#include "apps/sandbox.h"
#include "simulator/bench.h"
#include "tools/Class_Tools.h"

namespace {

namespace fs = std::filesystem;
namespace sim = hy_wristlog::simulator;
using namespace std::chrono_literals;

/// A recording in two files, of a logger that was worn from a day on.
void record(const fs::path& folder, const std::string& serial, std::chrono::hours worn, int day = 0) {
  auto options = sim::vividBenchOptions();
  options.Logger.SerialNumber = serial;
  const sim::Bench bench = sim::makeBench(options);
  sim::RecordingSetup setup = sim::ordinarySetup(*bench.World, sim::Mode::ActivityAndSpecialLight, 60);
  setup.StartTime += std::int64_t{day} * 86400;
  bench.Logger->setUp(setup);
  bench.Logger->wear(worn + std::chrono::days(day));
  const auto bytes = bench.Logger->recordedBytes();
  hy_wristlog::putFile(folder / "raw.bin", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  hy_wristlog::putFile(
      folder / "config.ini",
      "[Configuration Bytes]\r\nRaw Config Bytes=" +
          hy_wristlog::Class_Tools::fncConvertByteArrayToHexString(bench.Logger->block().image()) + "\r\n");
}

/// The contents of all files below a folder by their paths there.
std::map<std::string, std::string> filesBelow(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.is_regular_file())
      files[entry.path().lexically_relative(folder)] = hy_wristlog::contentOf(entry.path());
  return files;
}

const std::string Series = "in/out/series/logger=V1/start=20260302T140100Z/series.csv";

/// The Python of a document, all of it.
std::string pythonIn(const std::string& document) {
  std::istringstream lines(hy_wristlog::contentOf(document));
  std::string script;
  bool isPython = false;
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with("```"))
      isPython = line == "```python";
    else if (isPython)
      script += line + "\n";
  return script;
}

struct Study {
  Sandbox Box;

  Json run(int status, const std::string& options = "") const {
    const Outcome outcome = Box.run("study in --out in/out --jobs 3 --json " + options);
    EXPECT_EQ(outcome.Status, status) << outcome.Err;
    return Json::parse(outcome.Out);
  }
  void expectDone(int status, int decoded, int unchanged, int failed) const {
    const Json told = run(status);
    EXPECT_EQ(told["decoded"], decoded);
    EXPECT_EQ(told["unchanged"], unchanged);
    EXPECT_EQ(told["failed"], failed) << told["recordings"].dump(1);
  }
  void copy(const std::string& from, const std::string& to) const {
    fs::copy(Box.Folder / from, Box.Folder / to, fs::copy_options::recursive);
  }
  void remove(const std::string& folder) const { fs::remove_all(Box.Folder / folder); }
};

}  // namespace

TEST(StudyThreads, EachRecordingCountsOnceAndOnlyChangesAreDone) {
  Study study;
  const Sandbox& box = study.Box;
  const fs::path in = box.Folder / "in";
  record(in / "a", "V1", 30h);
  record(in / "b/c", "V 2/3", 30h);
  record(in / ".hidden", "V3", 1h);
  study.copy("in/a", "in/z");
  fs::create_directory_symlink("..", in / "b/loop");
  box.write("in/broken/raw.bin", "no recording");
  study.copy("in/a/config.ini", "in/broken/config.ini");

  const Json told = study.run(1);
  std::string folders;
  for (const Json& row : told["recordings"]) folders += row["folder"].get<std::string>() + " ";
  EXPECT_EQ(folders, "a b/c broken ");
  const Json row = told["recordings"][0];
  EXPECT_EQ(row["copies"], "z");
  EXPECT_EQ(row["epochs"], 1800);
  EXPECT_EQ(row["end_local"], "2026-03-03T15:01:00-05:00");
  EXPECT_TRUE(box.has("in/out/series/logger=V%202%2F3/start=20260302T140100Z/series.csv"));
  ASSERT_EQ(box.run("decode in/a --out plain").Status, 0);
  EXPECT_EQ(box.content(Series), box.content("plain/series.csv"));

  const auto before = filesBelow(in / "out");
  const auto written = fs::last_write_time(box.Folder / Series);
  study.expectDone(1, 0, 3, 1);
  // A machine that lacks its zones changes nothing of a study, nor does a file that is out of reach.
  study.Box.Environment = "TZDIR=/nowhere";
  EXPECT_EQ(study.run(1, "--force")["failure"]["number"], 9998);
  study.Box.Environment.clear();
  fs::rename(in / "a/config.ini", in / "a/kept");
  fs::create_directory(in / "a/config.ini");
  EXPECT_EQ(study.run(1)["unreadable"][0]["folder"], "a");
  fs::remove(in / "a/config.ini");
  fs::rename(in / "a/kept", in / "a/config.ini");
  study.expectDone(1, 0, 3, 1);
  EXPECT_EQ(filesBelow(in / "out"), before);
  EXPECT_EQ(fs::last_write_time(box.Folder / Series), written);

  // The copy takes the place of what is gone; a lost output is made again; a changed recording moves.
  study.remove("in/a");
  study.remove("in/broken");
  study.expectDone(0, 0, 2, 0);
  EXPECT_EQ(box.content(Series), box.content("plain/series.csv"));
  fs::remove(box.Folder / Series);
  study.expectDone(0, 1, 1, 0);
  EXPECT_EQ(box.content(Series), box.content("plain/series.csv"));
  record(in / "b/c", "V2", 2h, 1);
  box.write("in/out/series/mine.csv", "mine");
  const Json moved = study.run(0);
  EXPECT_EQ(moved["removed"], Json({"logger=V%202%2F3/start=20260302T140100Z"}));
  EXPECT_EQ(moved["not_of_this_study"].size(), 1U);
  EXPECT_TRUE(box.has("in/out/series/logger=V2/start=20260303T140100Z/series.csv"));
  EXPECT_FALSE(box.has("in/out/series/logger=V%202%2F3"));

  // Others than the beginning of the same recording are in conflict; a part of it is not.
  record(in / "y", "V1", 20h);
  study.expectDone(1, 1, 2, 2);
  EXPECT_FALSE(box.has(Series));
  box.write("in/y/raw.partial.bin", box.content("in/z/raw.bin").substr(0, 1000));
  box.write("in/y/config.ini", box.content("in/z/config.ini") + "[Recording]\r\nPart=1\r\n");
  fs::remove(in / "y/raw.bin");
  study.expectDone(0, 1, 2, 0);
  EXPECT_EQ(box.content(Series), box.content("plain/series.csv"));
}

TEST(StudyThreads, WhatWasStoppedGoesOnToTheSameOutput) {
  const hy_wristlog::TemporaryFolder folder;
  const hy_wristlog::Variable home("HOME", folder.path());
  for (int i = 0; i < 12; ++i)
    record(folder / ("in/" + std::to_string(i)), "V" + std::to_string(i % 4), 2h, i / 4);
  const auto run = [&](const std::string& out, int stopAfter) {
    int asked = 0;
    return wristlog::study({folder / "in", folder / out, 3, false},
                           {[](std::size_t, std::size_t) {}, [&] { return ++asked > stopAfter; }});
  };
  EXPECT_EQ(run("whole", 99).Decoded, 12U);
  const auto stopped = run("stopped", 1);
  EXPECT_TRUE(stopped.Stopped);
  EXPECT_LT(stopped.Decoded, 12U);
  EXPECT_FALSE(fs::exists(folder / "stopped/recordings.csv"));
  const auto rest = run("stopped", 99);
  EXPECT_EQ(rest.Unchanged, stopped.Decoded);
  EXPECT_EQ(filesBelow(folder / "stopped"), filesBelow(folder / "whole"));
}

TEST(Study, RefusesFoldersThatAreNotItsOwn) {
  const Study study;
  record(study.Box.Folder / "in/a", "V1", 1h);
  record(study.Box.Folder / "other", "V2", 1h);
  study.Box.write("in/out/notes.txt", "mine");
  EXPECT_EQ(study.run(1)["failure"]["number"], 58);
  study.run(0, "--force");
  EXPECT_EQ(study.Box.content("in/out/notes.txt"), "mine");
  EXPECT_EQ(study.Box.run("study other --out in/out").Status, 1);
  EXPECT_EQ(study.Box.run("study in --out in").Status, 1);
  study.remove("in/a");
  EXPECT_EQ(study.run(1)["failure"]["number"], 53);
  EXPECT_TRUE(study.Box.has(Series)) << "an input that is gone altogether is rather not there";
  study.Box.write("in/out/study.json", "{");
  EXPECT_EQ(study.Box.run("study other --out in/out").Status, 1);
}

TEST(Study, DaskReadsItsTablesAsOne) {
  const Study study;
  for (const int i : {1, 2, 3}) record(study.Box.Folder / ("in/" + std::to_string(i)), "V1", 5h, i);
  ASSERT_EQ(study.Box.run("legacy retrieve --simulate pendrel27 --out in/p").Status, 0);
  const Json told = study.run(0);
  ASSERT_EQ(told["decoded"], 4);
  const Json& pendrel = told["recordings"].back();
  EXPECT_EQ(pendrel["model"], "Pendrel Steps");
  EXPECT_EQ(pendrel["result"], nullptr) << "its data tell nothing of their soundness";
  EXPECT_EQ(study.run(0)["unchanged"], 4);
  const Json package = Json::parse(study.Box.content("in/out/datapackage.json"));
  EXPECT_EQ(package["resources"][1]["path"].size(), 4U);
  EXPECT_EQ(package["resources"][2]["path"].size(), 3U);
  fs::rename(study.Box.Folder / "in/out", study.Box.Folder / "study");
  study.Box.write("read.py", pythonIn(TEST_DATA "/../../docs/studies.md") + R"(
assert sorted(table.logger) == ["B211234", "V1", "V1", "V1"]
for frame in series, lazy.compute():
    assert len(frame) == table.epochs.sum() == 900 + 4319, (len(frame), table.epochs)
    assert frame.groupby("logger").steps.count().to_dict() == {"B211234": 4319, "V1": 0}
    assert frame.utc.min() == pandas.Timestamp(table.start_utc.min())
assert means["V1"].notna().all()
events = dask.dataframe.read_csv("study/events/**/events.csv", dtype=str)
assert (events.kind.compute() == "acquisition_start").sum() == 3
)");
  for (const std::string python : {"python3", "/usr/bin/python3"}) {
    if (std::system((python + " -c 'import dask.dataframe' 2>/dev/null").c_str()) != 0) continue;
    EXPECT_EQ(std::system(("cd " + study.Box.Folder.string() + " && " + python + " read.py").c_str()), 0);
    return;
  }
  GTEST_SKIP() << "needs python3-dask";
}
