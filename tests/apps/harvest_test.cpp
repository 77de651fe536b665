#include <atomic>
#include <filesystem>

#include "apps/desk.h"
#include "apps/sandbox.h"
#include "apps/served.h"
#include "cli/participants.h"
#include "commands/harvest.h"
#include "session/process.h"
#include "support/certificates.h"
#include "support/surroundings.h"

namespace wristlog {
namespace {

namespace fs = std::filesystem;
namespace hw = hy_wristlog;
namespace sim = hy_wristlog::simulator;
using namespace std::chrono_literals;
using namespace std::string_literals;

/// Docks at one table, each in a world of its own for the thread that works with it. Files are shared.
class Table {
 public:
  template <class Options>
  sim::SimulatedLogger& add(Options options, sim::nanoseconds worn = 5h) {
    const std::string number = std::to_string(Docks.size() + 1);
    options.World.RootFolder = home_.path();
    options.Dock.Place = "usb-1-" + number;
    options.Logger.SerialNumber = "V" + number;
    const sim::Bench bench = sim::makeBench(options);
    if (worn > 0s) {
      bench.Logger->setUp(sim::ordinarySetup(*bench.World, sim::Mode::Activity, 60));
      bench.Logger->wear(worn);
    }
    take(bench);
    return *bench.Logger;
  }
  void addPendrel() {
    sim::PendrelBenchOptions options;
    options.World.RootFolder = home_.path();
    const sim::PendrelBench bench = sim::makePendrelBench(options);
    bench.Logger->setUp(sim::ordinaryPendrelSetup(*bench.World, 30));
    bench.Logger->wear(1h);
    take(bench);
  }

  std::vector<HarvestOutcome> harvest(HarvestWatch* watch = nullptr) {
    HarvestWatch none;
    Options.Folder = out();
    return wristlog::harvest({}, Options, Docks, watch != nullptr ? *watch : none,
                             [this](const hw::Dock& dock) {
                               for (std::size_t i = 0; i < Docks.size(); ++i)
                                 if (Docks[i].Name == dock.Name) return Benches[i].World;
                               return std::shared_ptr<sim::SimulatedWorld>();
                             });
  }
  std::string out() const { return home_ / "out"; }

  std::vector<hw::Dock> Docks;
  std::vector<sim::DockBench> Benches;
  HarvestOptions Options;

 private:
  void take(const sim::DockBench& bench) {
    const hw::platform::WorldScope scope(bench.World);
    Docks.push_back(hw::docks().front());
    Benches.push_back(bench);
  }

  hw::TemporaryFolder home_;
};

std::string ends(const std::vector<HarvestOutcome>& outcomes) {
  std::string words;
  for (const HarvestOutcome& outcome : outcomes)
    words +=
        outcome.SerialNumber + " " + wordsFor(outcome.End) + (outcome.Configured ? " configured; " : "; ");
  return words;
}

TEST(HarvestThreads, EachDockComesToItsOwnEndAndNothingIsRetrievedTwice) {
  Table table;
  table.add(sim::vividBenchOptions());
  table.add(sim::kestrin2BenchOptions());
  table.add(sim::vividBenchOptions(), 0s);
  table.add(sim::vividBenchOptions()).Faults.Silent = true;
  table.add(sim::kestrin2BenchOptions(), 300h);
  table.Benches.back().Dock->unplugAfterBytes(6000);
  table.add(sim::vividBenchOptions());
  table.Benches.back().Dock->pullOut();
  table.addPendrel();
  const auto first = table.harvest();
  EXPECT_EQ(ends(first),
            "V1 retrieved; V2 retrieved; V3 no data;  no logger; V5 failed;  no logger; "
            "C941234 retrieved; ");
  EXPECT_EQ(first[0].Folder, table.out() + "/V1-2026-03-02T0901");
  for (const std::size_t place : {0, 1, 6}) {
    EXPECT_TRUE(first[place].isGood()) << first[place].Words;
    EXPECT_TRUE(fs::exists(first[place].Folder + "/series.csv"));
  }
  EXPECT_FALSE(first[4].isGood());
  EXPECT_NE(first[4].Words.find("disconnected"), std::string::npos) << first[4].Words;
  EXPECT_TRUE(fs::exists(first[4].Folder + "/session.log")) << first[4].Folder;
  EXPECT_FALSE(fs::exists(first[4].Folder + "/raw.bin"));

  table.Benches[4].Dock->plug();
  const auto again = table.harvest();
  EXPECT_EQ(ends(again),
            "V1 retrieved before; V2 retrieved before; V3 no data;  no logger; V5 retrieved;  no logger; "
            "C941234 retrieved before; ");
  EXPECT_EQ(again[0].Folder, first[0].Folder);
  EXPECT_EQ(again[4].Folder, first[4].Folder) << "its beginning is replaced by all of it";
}

TEST(HarvestThreads, ARecordingThatIsThereIsLeftAndLoggersOfOneNumberGetAFolderEach) {
  Table table;
  for (int times = 0; times < 3; ++times) {
    sim::BenchOptions options;
    table.add(options, std::chrono::hours(2 + times)).block().setText(sim::block::SerialNumber, "SAME");
  }
  fs::create_directories(table.out() + "/SAME-2026-03-02T0901");
  hw::putFile(table.out() + "/SAME-2026-03-02T0901/series.csv", "kept");
  const auto outcomes = table.harvest();
  EXPECT_EQ(ends(outcomes), "SAME retrieved; SAME retrieved; SAME retrieved; ");
  EXPECT_EQ(hw::contentOf(table.out() + "/SAME-2026-03-02T0901/series.csv"), "kept");
  EXPECT_EQ(std::distance(fs::directory_iterator(table.out()), {}), 4);
}

TEST(HarvestThreads, ARequestToStopEndsAllOfThem) {
  struct Stopping : HarvestWatch {
    void progress(std::size_t, const std::string& text) override {
      if (text.starts_with("Read") && ++Told == 20) setInterruptRequested(true);
    }
    std::atomic<int> Told = 0;
  };
  Table table;
  for (int times = 0; times < 4; ++times) table.add(sim::vividBenchOptions(), 300h);
  Stopping watch;
  const auto outcomes = table.harvest(&watch);
  setInterruptRequested(false);
  EXPECT_EQ(ends(outcomes).find("failed"), std::string::npos) << ends(outcomes);
  EXPECT_NE(ends(outcomes).find("stopped"), std::string::npos) << ends(outcomes);
  EXPECT_EQ(ends(table.harvest()).find("failed"), std::string::npos) << "and can be retrieved afterwards";
}

TEST(HarvestThreads, ParticipantsGetTheLoggersThatAreEmptyOrRetrieved) {
  Table table;
  table.add(sim::vividBenchOptions());
  table.add(sim::vividBenchOptions()).Faults.Silent = true;
  table.add(sim::kestrin2BenchOptions(), 0s);
  table.add(sim::kestrin2BenchOptions(), 300h);
  table.Benches.back().Dock->unplugAfterBytes(6000);
  const hw::TemporaryFolder folder;
  hw::putFile(folder / "list.csv",
              "\xEF\xBB\xBFIdentity;Mode;Epoch;gender;serial_number;dock;no-daylight\r\n"
              "\"Subject; 1\";1;60;F;;USB-1-1;yes\r\n\r\nSubject 2;1;60;M;;;\r\nSubject 3;1;30;F;v3;;\r\n"
              "Subject 4;1;30;F;v4;;\r\nSubject 5;1;30;F;;;\r\n");
  table.Options.Participants = participantsIn(folder / "list.csv", 1);
  ASSERT_EQ(table.Options.Participants.size(), 5U);
  EXPECT_EQ(table.Options.Participants[1].Line, 4U);
  const auto outcomes = table.harvest();
  EXPECT_EQ(ends(outcomes), "V1 retrieved configured;  no logger; V3 no data configured; V4 failed; ");
  EXPECT_EQ(outcomes[0].Given->Options.Subject.Identity, "Subject; 1");
  EXPECT_EQ(outcomes[2].Given->Line, 5U);
  EXPECT_EQ(outcomes[3].Given, nullptr) << "its recording is still in it";
  table.Options.Participants = {table.Options.Participants.back()};
  EXPECT_EQ(table.harvest()[2].Given, nullptr) << "it waits for its start, and the row names no logger";
  table.Options.Participants.front().Dock = "COM33";
  EXPECT_THROW(table.harvest(), hw::Failure) << "several docks have this name";

  for (const auto& [list, words] : std::initializer_list<std::pair<const char*, const char*>>{
           {"identity,mode\n", "no participant"},
           {"identity,size\nA,1\n", "line 1: \"size\" is no column"},
           {"identity,mode,epoch\nA,1,60\nB,1,61\n", "line 3: --epoch"},
           {"identity,mode\nA,1\n", "line 2: --epoch is required"},
           {"mode,epoch,dock\n1,60,a\n1,60,A\n", "line 3: The logger or dock A is given to two"},
           {"mode,epoch,identity\n1,60,\"A\n1,60,B\n", "line 2: A quotation mark"},
           {"mode,epoch,identity\n1,60,Andr\xE9\n", "not in UTF-8"},
           {"mode,epoch,help\n1,60,yes\n", "\"help\" is no column"},
           {"mode,epoch\n,\n1,60,7\n", "line 3: It has more cells"}}) {
    hw::putFile(folder / "list.csv", list);
    const Told told = runHere("harvest --out " + table.out() + " --configure " + (folder / "list.csv"));
    EXPECT_EQ(told.Status, WrongUsage) << list;
    expectIn(told.Err, {words});
  }
}

TEST(Harvest, TheProgramTellsAndUsesDocksByTheirNames) {
  Desk<sim::Bench> desk(sim::makeVividBench());
  sim::SimulatedPendrel& pendrel = desk.bench.World->addPendrel({});
  desk.bench.World->addDock({.Kind = sim::DockKind::Pendreader, .ComPort = 1}).insert(pendrel);
  sim::SimulatedDock& held = desk.bench.World->addDock({.ComPort = 34, .Place = "usb-7"});
  held.Faults.Held = true;
  desk.bench.Logger->setUp(sim::ordinarySetup(*desk.bench.World, sim::Mode::Activity, 60));
  desk.bench.Logger->wear(5h);
  EXPECT_EQ(runHere("docks --probe").Out,
            "usb-1-1: Kestrin Vivid, COM33, free\n"
            "  Logger V0012345, worn by Subject 17: Collecting Data\n"
            "usb-7: Kestrin Vivid, COM34, in use\n  The port is already open\n"
            "Dock 2: Pendreader, COM1, free\n  Logger C941234: Pendrel with 0 bytes\n"
            "Kestrin 2: no dock\n");
  expectIn(runHere("docks --dock com34 --json").Out,
           {R"("name": "usb-7")", R"("connected": 1)", R"("in use")"});
  expectIn(runHere("status").Err, {"Too Many Docks"});
  expectIn(runHere("status --dock nowhere").Err, {"The docks are: usb-1-1 (Kestrin Vivid, COM33), usb-7"});
  expectIn(runHere("status --dock COM33").Out, {"Collecting Data"});
  expectIn(runHere("status --dock 'Dock 2'").Err, {"wristlog legacy"});
  expectIn(runHere("legacy status --dock usb-1-1").Err, {"not of a Pendreader"});
  EXPECT_EQ(runHere("legacy status --dock 'dock 2'").Status, Good);
  EXPECT_EQ(runHere("config show --dock usb-1-1").Status, Good);
  EXPECT_EQ(runHere("config show").Status, WrongUsage);
  expectIn(runHere("configure --dock usb-1-1 --mode 1 --epoch 60").Err, {"retrieve --dock 'usb-1-1' --out"});
  const std::string out = desk.bench.World->rootFolder() + "/out";
  held.unplug();
  const Told told = runHere("harvest --out " + out);
  EXPECT_EQ(told.Status, Good) << told.all();
  expectIn(told.Out, {"usb-1-1  V0012345  retrieved  " + out + "/V0012345-2026-03-02T0901\n",
                      "Dock 2   C941234   no data    -\n", "usb-1-1: The recording is sound."});
  const Told again = runHere("harvest --json --out " + out);
  expectIn(again.Out, {R"({"event":"end","good":true,"docks":[{"dock":"usb-1-1")", R"("retrieved before")"});
}

/// These are served by other processes, so it takes real time.
TEST(Harvest, EightServedDocksOfThreeKindsGiveTheirRecordingsOnce) {
  const Sandbox box;
  const hw::Certificates made;
  const std::string network = " --listen 0", encrypted = network + " --certificate " + (made / "good.pem");
  std::vector<std::unique_ptr<Served>> served;
  for (const std::string& logger :
       {"vivid --serial-number V1"s, "kestrin2 --serial-number K1"s, "pendrel27"s,
        "vivid --serial-number V2" + network, "kestrin2 --serial-number K2" + network, "pendrel14" + network,
        "vivid --serial-number V3" + encrypted, "kestrin2 --serial-number K3" + encrypted})
    served.push_back(std::make_unique<Served>(
        box,
        logger + " --worn 5h --speed 600 --docks Docks.INI --port " + std::to_string(50 + served.size())));
  const auto ends = [&](const std::string& expected) {
    const Outcome told = box.run("harvest --out study --json");
    EXPECT_EQ(told.Status, 0) << told.Out << told.Err;
    const Json end = Json::parse(told.Out.substr(told.Out.rfind('\n', told.Out.size() - 2) + 1));
    EXPECT_EQ(end["docks"].size(), served.size());
    for (const Json& dock : end["docks"]) {
      EXPECT_EQ(dock.value("outcome", ""), expected) << dock;
      EXPECT_TRUE(fs::exists(box.Folder / dock.value("folder", "") / "series.csv")) << dock;
    }
  };
  ends("retrieved");
  ends("retrieved before");
  EXPECT_EQ(std::distance(fs::directory_iterator(box.Folder / "study"), {}), 8);
}

}  // namespace
}  // namespace wristlog
