#include "apps/desk.h"
#include "apps/sandbox.h"
#include "session/process.h"

namespace {

namespace fs = std::filesystem;
namespace sim = hy_wristlog::simulator;
using hy_wristlog::contentOf;
using namespace std::chrono_literals;

const fs::path Sessions = fs::path(TEST_DATA) / "sessions";

/// A command with a fault of its line, or stopped, at a byte: of all, or of those to the program.
struct RecordedSession {
  std::string Name, Command;
  struct {
    std::uint64_t Cut = 0, Stopped = 0;
    int Altered = 0;
  } At;
  int Status;
} const Recorded[] = {
    {"vivid", "retrieve --model vivid --out subject-17", {}, 0},
    {"vivid-altered", "retrieve --model vivid --json --out subject-17", {.Altered = 900}, 0},
    {"vivid-cut", "retrieve --model vivid --out subject-17", {.Cut = 1000}, 1},
    {"vivid-stopped", "retrieve --model vivid --out subject-17", {.Stopped = 1000}, 1},
    {"kestrin2", "retrieve --model kestrin2 --out subject-17", {}, 0},
    {"kestrin2-redacted", "retrieve --model kestrin2 --out recording --redact", {}, 0},
    {"kestrin2-cut", "retrieve --model kestrin2 --out subject-17", {.Cut = 200}, 1},
    {"pendrel13", "legacy retrieve --port 1 --out subject-17", {}, 0},
    {"pendrel13-cut", "legacy status --port 1 --json", {.Cut = 60}, 1},
    {"pendrel14", "legacy retrieve --port 1 --out subject-17", {}, 0},
    {"pendrel14-altered", "legacy retrieve --port 1 --out subject-17", {.Altered = 700}, 1},
    {"pendrel27", "legacy retrieve --port 1 --out subject-17", {}, 0},
    {"pendrel27-cut", "legacy export-krc --port 1 -- subject-17.krc", {.Cut = 600}, 1},
};

template <class Bench>
sim::DockBench worn(Bench bench, const auto& setup) {
  bench.Logger->setUp(setup(*bench.World));
  bench.Logger->wear(30min);
  return bench;
}

sim::DockBench benchOf(const RecordedSession& session) {
  if (session.Name.starts_with("pendrel")) {
    sim::PendrelBenchOptions options;
    const bool steps = session.Name.starts_with("pendrel27");
    options.Logger.Model = steps                                   ? sim::PendrelModel::Steps
                           : session.Name.starts_with("pendrel14") ? sim::PendrelModel::Checksums
                                                                   : sim::PendrelModel::Plain;
    return worn(sim::makePendrelBench(options),
                [&](const auto& world) { return sim::ordinaryPendrelSetup(world, 60, steps); });
  }
  return worn(
      session.Name.starts_with("vivid") ? sim::makeVividBench() : sim::makeKestrin2Bench(),
      [](const auto& world) { return sim::ordinarySetup(world, sim::Mode::ActivityAndStandardLight, 60); });
}

/// Makes the sessions of tests/data anew; docs/simulator.md tells when.
void makeSession(const RecordedSession& session) {
  const Sandbox box;
  const fs::path here = fs::current_path();
  fs::current_path(box.Folder);
  const sim::DockBench bench = benchOf(session);
  bench.line().HoldBack = 200ms;
  sim::LineFaults& faults = bench.line().Faults;
  if (session.At.Cut > 0) faults.CutAfterTotal = session.At.Cut;
  if (session.At.Altered > 0) faults.AlterToPc = {session.At.Altered, 1};
  if (session.At.Stopped > 0) faults.ActAfterTotal = session.At.Stopped;
  faults.Action = [] { wristlog::setInterruptRequested(true); };
  const fs::path record = Sessions / (session.Name + ".jsonl");
  fs::remove(record);
  std::string command = session.Command;
  command.insert(std::min(command.find(" -- "), command.size()), " --record " + record.string());
  const hy_wristlog::platform::WorldScope scope(bench.World);
  const Told told = runHere(shellWords(command));
  EXPECT_EQ(told.Status, session.Status);
  wristlog::setInterruptRequested(false);
  fs::current_path(here);
  std::ofstream(Sessions / (session.Name + ".txt")) << told.all();
  for (const std::string folder : {"subject-17", "recording"})
    if (const fs::path series = box.Folder / folder / "series.csv"; fs::exists(series))
      fs::copy_file(series, Sessions / (session.Name + ".csv"), fs::copy_options::overwrite_existing);
}

TEST(Replay, RecordedSessionsSayWhatTheySaidAndNameAChangedByte) {
  for (const RecordedSession& session : Recorded) {
    SCOPED_TRACE(session.Name);
    if (std::getenv("HY_WRISTLOG_MAKE_SESSIONS") != nullptr) makeSession(session);
    const Sandbox box;
    std::string text = contentOf(Sessions / (session.Name + ".jsonl"));
    box.write("record", text);
    const Outcome outcome = box.run("replay record --out copy");
    EXPECT_EQ(outcome.Status, session.Status);
    const std::string where =
        fs::exists(box.Folder / "copy") ? "This was replayed: what the command wrote is in copy.\n" : "";
    EXPECT_EQ(outcome.Out + outcome.Err, contentOf(Sessions / (session.Name + ".txt")) + where);
    EXPECT_EQ(box.content("copy/series.csv"), contentOf(Sessions / (session.Name + ".csv")));

    const std::string word = session.Name.starts_with("pendrel") ? R"("out":"C")" : R"("out":"w")";
    ASSERT_NE(text.find(word), std::string::npos);
    box.write("changed", text.replace(text.find(word), word.size(), R"("out":"#")"));
    const Outcome changed = box.run("replay changed");
    EXPECT_EQ(changed.Status, 1);
    EXPECT_NE(changed.Err.find("#\"\n  Now: "), std::string::npos) << changed.Err;
  }
}

TEST(Replay, WhatACommandToldItTellsAgainAndARedactedRecordNamesNobody) {
  for (const std::string command :
       {"configure --model vivid --simulate vivid --mode 1 --epoch 60 --erase --identity Quincy --redact "
        "--json",
        "configure --model vivid --simulate vivid --mode 1 --epoch 60 --erase --identity mode --redact "
        "--json",
        "legacy configure --simulate pendrel27 --mode 1 --epoch 60 --erase --identity Quincy --redact --json",
        "legacy export-krc --simulate pendrel13 -- x.krc", "docks",
        "config export --model vivid --simulate vivid --out missing/config.ini"}) {
    SCOPED_TRACE(command);
    Sandbox box;
    box.Environment = "HY_WRISTLOG_RECORD=kept";
    const Outcome outcome = box.run(command), again = box.run("replay kept");
    EXPECT_EQ(outcome.Status, command.ends_with("config.ini") ? 1 : 0) << outcome.Err;
    EXPECT_EQ(again.Status, outcome.Status);
    const auto withoutName = [](const Outcome& told) {
      constexpr std::string_view Name = "\"identity\": \"";
      std::string words = told.Out + told.Err;
      for (std::size_t at = words.find(Name); at != words.npos; at = words.find(Name, at + 1))
        words.erase(at + Name.size(), words.find('"', at + Name.size()) - at - Name.size());
      return words;
    };
    EXPECT_EQ(withoutName(again), withoutName(outcome));
    std::string kept = box.content("kept");
    for (const char* name : {"Quincy", "5175696e6379"}) EXPECT_EQ(kept.find(name), std::string::npos) << name;

    kept.insert(kept.find("\"exit_status\":") + 14, "1844674407370955161");
    box.write("damaged", kept);
    EXPECT_NE(box.run("replay damaged").Err.find(" is damaged"), std::string::npos);
  }
}

}  // namespace
