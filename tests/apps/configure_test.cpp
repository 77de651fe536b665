#include <filesystem>
#include <nlohmann/json.hpp>

#include "apps/desk.h"
#include "support/surroundings.h"

namespace {

namespace sim = hy_wristlog::simulator;
using namespace std::chrono_literals;
using Json = nlohmann::ordered_json;

struct Commands {
  std::string Status, Retrieve, Configure;
};

const Commands Vivid{"status --model vivid ", "retrieve --model vivid --out ",
                     "configure --model vivid --mode 5 --epoch 60 --identity Next "};
const Commands Kestrin2{"status --model kestrin2 ", "retrieve --model kestrin2 --out ",
                        "configure --model kestrin2 --mode 3 --epoch 60 --identity Next "};
const Commands Pendrel{"legacy status --port 1 ", "legacy retrieve --port 1 --out ",
                       "legacy configure --port 1 --mode 1 --epoch 30 --identity Next "};

Desk<sim::Bench> worn(const sim::Bench& bench) {
  bench.Logger->setUp(sim::ordinarySetup(*bench.World, sim::Mode::ActivityAndStandardLight, 60));
  bench.Logger->wear(3h);
  return Desk(bench);
}

Desk<sim::PendrelBench> wornPendrel() {
  const sim::PendrelBench bench = sim::makePendrelBench();
  bench.Logger->setUp(sim::ordinaryPendrelSetup(*bench.World, 60));
  bench.Logger->wear(3h);
  return Desk(bench);
}

/// A recording is refused to `configure` until it was retrieved and written, and nothing but an inquiry is
/// sent for it.
template <class Bench>
void expectKept(Desk<Bench> desk, const Commands& commands) {
  const hy_wristlog::TemporaryFolder folder;
  const std::string made = folder / "made";
  const auto expectRefused = [&] {
    Told told;
    const std::string asking = desk.sentBy(commands.Status, told);
    expectIn(told.Out, {"not retrieved"});
    const std::string sent = desk.sentBy(commands.Configure, told);
    EXPECT_EQ(told.Status, 1);
    expectIn(told.Err,
             {"not retrieved", "of Subject 17, since 2026-03-02 09:01 -05:00", " bytes. ", "--erase",
              "'wristlog " + commands.Retrieve.substr(0, commands.Retrieve.find(" --"))});
    EXPECT_EQ(sent, asking);
  };
  expectRefused();
  sim::SystemFault& full = desk.bench.World->Faults.FileWrite;
  full.ErrorNumber = 28;
  full.When = sim::always();
  EXPECT_EQ(runHere(commands.Retrieve + made + " --force").Status, 1);
  full.When = {};
  expectRefused();

  EXPECT_EQ(runHere(commands.Retrieve + made + " --force").Status, 0);
  expectIn(runHere(commands.Status).Out, {"was retrieved on 2026-03-02 1", ", to " + made});
  const std::string bytes = hy_wristlog::contentOf(made + "/raw.bin");
  hy_wristlog::putFile(made + "/raw.bin", "of another recording");
  expectRefused();
  hy_wristlog::putFile(made + "/raw.bin", bytes);
  EXPECT_EQ(Json::parse(runHere(commands.Status + "--json").Out).at("retrieval").at("place"), made);
  const Told told = runHere(commands.Configure);
  EXPECT_EQ(told.Status, 0) << told.Err;
  expectIn(told.Out,
           {"  Who      Next, gender X\n", "  Start    2026-03-02 1", " -05:00\n", "  Battery  about "});
  EXPECT_EQ(runHere(commands.Configure).Status, 0) << "nothing is recorded yet";
  desk.bench.Logger->wear(3h);
  EXPECT_EQ(runHere(commands.Configure).Status, 1);
  const Json document = Json::parse(runHere(commands.Configure + "--erase --json").Out);
  EXPECT_EQ(document.at("recording").at("identity"), "Next");
}

TEST(Configure, ErasesNothingThatWasNotRetrieved) {
  expectKept(worn(sim::makeVividBench()), Vivid);
  expectKept(worn(sim::makeKestrin2Bench()), Kestrin2);
  expectKept(wornPendrel(), Pendrel);
}

TEST(Configure, APendrelThatWasWornAgainIsNotRetrieved) {
  Desk desk = wornPendrel();
  const hy_wristlog::TemporaryFolder folder;
  EXPECT_EQ(runHere(Pendrel.Retrieve + (folder / "made")).Status, 0);
  desk.bench.Logger->wear(2h);
  EXPECT_EQ(runHere(Pendrel.Configure).Status, 1);
}

TEST(Configure, WhatCannotBeReadIsErasedOnlyWhenAsked) {
  Desk desk = worn(sim::makeVividBench());
  sim::Fault& damage = desk.bench.Logger->Faults.BadConfigChecksum;
  damage = sim::always();
  Told told;
  const std::string asking = desk.sentBy(Vivid.Status, told);
  EXPECT_EQ(told.Status, 1);
  EXPECT_EQ(desk.sentBy(Vivid.Configure, told), asking);
  expectIn(told.Err, {"It cannot be told whether the logger holds a recording", "--erase"});
  EXPECT_EQ(told.Status, 1);
  constexpr std::int32_t PassesOfAnInquiry = 2;
  damage = {0, PassesOfAnInquiry};
  EXPECT_EQ(runHere(Vivid.Configure + "--erase").Status, 0);
  desk.bench.Dock->unplug();
  EXPECT_EQ(desk.sentBy(Vivid.Configure + "--erase", told), "");
  expectIn(told.Err, {"Code 10003: No Kestrin Vivid dock is connected"});
}

TEST(Configure, WhatTheLoggerWouldNotDoIsRefusedBeforeItIsAsked) {
  Desk desk = worn(sim::makeVividBench());
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"60 --start 2026-03-08T02:30",
       {"10007", "skip 2026-03-08 02:30", "from 2026-03-08 02:00 to 2026-03-08 03:00"}},
      {"60 --start 2026-03-01", {"10007", "The earliest start is now 2026-03-02 12:0"}},
      {"120 --start 2026-03-05 --end 2026-03-05T03:59",
       {"10023", "ends at 2026-03-05 04:00 at the earliest"}},
      {"300 --end 2026-03-03T12:00", {"10023", "ends at 2026-03-03 13:"}},
      {"60 --end 2026-03-08T02:30", {"10023", "skip"}},
      {"60 --start 2026-11-01T01:30", {"10007", "near a change of the clocks", "is 2026-11-01 02:30."}},
      {"60 --zone XYZ", {"10019"}}};
  for (const auto& [options, words] : cases) {
    SCOPED_TRACE(options);
    Told told;
    EXPECT_EQ(desk.sentBy("configure --model vivid --mode 1 --erase --epoch " + options, told), "");
    EXPECT_EQ(told.Status, 1);
    expectIn(told.Err, words);
  }
  const Told told = runHere(
      "configure --model vivid --mode 1 --erase --epoch 300 --zone EST --start 2026-03-07T10:02:30 "
      "--end 2026-03-09T10:00");
  EXPECT_EQ(told.Status, 0) << told.Err;
  expectIn(told.Out,
           {"  Mode     1, activity\n", "  Epoch    300 seconds\n", "  Start    2026-03-07 10:00 -05:00\n",
            "  End      2026-03-09 10:00 -04:00\n", "  Zone     EST, "});
  EXPECT_EQ(
      runHere("legacy configure --simulate pendrel14 --mode 1 --epoch 30 --start 2026-03-08T02:30").Status,
      1);
}

TEST(Retrieve, WhatWasIgnoredIsNamedAndNoFailure) {
  Desk desk(sim::makeVividBench());
  sim::RecordingSetup setup = sim::ordinarySetup(*desk.bench.World, sim::Mode::Activity, 60);
  setup.Subject.Gender = '\\';
  desk.bench.Logger->setUp(setup);
  desk.bench.Logger->wear(3h);
  const hy_wristlog::TemporaryFolder folder;
  EXPECT_EQ(runHere(Vivid.Retrieve + (folder / "made")).Status, 1);
  const Told told = runHere(Vivid.Retrieve + (folder / "ignored") + " --ignore-warnings");
  EXPECT_EQ(told.Status, 0) << told.Err;
  expectIn(told.Out, {"Warning, ignored: the subject's details in the logger are incomplete.\n",
                      "The logger has stopped recording. Configure it to record again.\n"});
  EXPECT_FALSE(std::filesystem::exists(folder / "ignored/session.log"));
}

}  // namespace
