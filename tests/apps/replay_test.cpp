#include <gtest/gtest.h>

#include "apps/sandbox.h"
#include "cli/cli.h"
#include "simulator/bench.h"

namespace {

namespace fs = std::filesystem;
namespace sim = hy_wristlog::simulator;
using namespace std::chrono_literals;

const fs::path Sessions = fs::path(TEST_DATA) / "sessions";

struct RecordedSession {
  std::string Name, Command;
  std::uint64_t CutAfter, AlteredByte;  ///< of all, and of those to the program; 0 for none
  int Status;
  std::string Word, OtherWord;  ///< something that the program says, and something else
} const Recorded[] = {
    {"vivid", "retrieve --model vivid --out subject-17", 0, 0, 0, "w", "v"},
    {"vivid-altered", "retrieve --model vivid --json --out subject-17", 0, 900, 0, "w", "v"},
    {"vivid-cut", "retrieve --model vivid --out subject-17", 1000, 0, 1, "w", "v"},
    {"kestrin2", "retrieve --model kestrin2 --out subject-17", 0, 0, 0, "w", "v"},
    {"kestrin2-cut", "retrieve --model kestrin2 --out subject-17", 200, 0, 1, "w", "v"},
    {"pendrel27", "legacy retrieve --port 1 --out subject-17", 0, 0, 0, "C", "D"},
    {"pendrel13-cut", "legacy status --port 1 --json", 60, 0, 1, "C", "D"},
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
    const bool steps = session.Name == "pendrel27";
    options.Logger.Model = steps ? sim::PendrelModel::Steps : sim::PendrelModel::Plain;
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
  if (session.CutAfter > 0) bench.line().Faults.CutAfterTotal = session.CutAfter;
  if (session.AlteredByte > 0) bench.line().Faults.AlterToPc = {static_cast<int>(session.AlteredByte), 1};
  const fs::path record = Sessions / (session.Name + ".jsonl");
  fs::remove(record);
  std::istringstream words("wristlog " + session.Command + " --record " + record.string());
  std::vector<std::string> arguments{std::istream_iterator<std::string>(words), {}};
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  const hy_wristlog::platform::WorldScope scope(bench.World);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  {
    wristlog::CommandLine cli;
    wristlog::addCommands(cli);
    EXPECT_EQ(cli.run(static_cast<int>(pointers.size()), pointers.data()), session.Status);
  }
  fs::current_path(here);
  std::ofstream(Sessions / (session.Name + ".txt"))
      << testing::internal::GetCapturedStdout() << testing::internal::GetCapturedStderr();
  if (box.has("subject-17/series.csv"))
    fs::copy_file(box.Folder / "subject-17/series.csv", Sessions / (session.Name + ".csv"),
                  fs::copy_options::overwrite_existing);
}

std::string contentOf(const fs::path& path) {
  return {std::istreambuf_iterator<char>(std::ifstream(path, std::ios::binary).rdbuf()), {}};
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
    EXPECT_EQ(outcome.Out + outcome.Err, contentOf(Sessions / (session.Name + ".txt")));
    EXPECT_EQ(box.content("copy/series.csv"), contentOf(Sessions / (session.Name + ".csv")));

    const std::string word = "\"out\":\"" + session.Word + "\"";
    ASSERT_NE(text.find(word), std::string::npos);
    box.write("changed", text.replace(text.find(word), word.size(), "\"out\":\"" + session.OtherWord + "\""));
    const Outcome changed = box.run("replay changed");
    EXPECT_EQ(changed.Status, 1);
    EXPECT_NE(changed.Err.find("\"" + session.OtherWord + "\"\n  Now: "), std::string::npos) << changed.Err;
  }
}

TEST(Replay, ARedactedRecordReplaysAndNamesNobody) {
  for (const std::string command :
       {"configure --model vivid --simulate vivid", "legacy configure --simulate pendrel27"}) {
    const Sandbox box;
    const Outcome outcome =
        box.run(command + " --mode 1 --epoch 60 --identity Quincy --redact --record kept --json");
    const Outcome again = box.run("replay kept");
    EXPECT_EQ(again.Out + again.Err, outcome.Out + outcome.Err);
    for (const char* name : {"Quincy", "5175696e6379"})
      EXPECT_EQ(box.content("kept").find(name), std::string::npos) << name;
  }
}

}  // namespace
