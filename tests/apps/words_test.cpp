#include <gtest/gtest.h>

#include <filesystem>

#include "apps/desk.h"
#include "support/surroundings.h"
#include "words/meanings.h"

namespace wristlog {
namespace {

namespace sim = hy_wristlog::simulator;
using hy_wristlog::TemporaryFolder;

/// Clears the screen, and puts a line of its own under the program's.
const std::string Hostile = "\x1B[2J\r\nForged\x9D";

/// All that a command tells people, run in the thread's world.
std::string told(const std::vector<std::string>& arguments) { return runHere(arguments).all(); }

void expectHarmless(const std::vector<std::string>& arguments, const std::string& seen) {
  std::string command;
  for (const std::string& word : arguments) command += word + ' ';
  SCOPED_TRACE(command);
  const std::string text = told(arguments);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool control = (byte < 0x20 && byte != '\n') || byte == 0x7F;
    const bool c1 = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    ASSERT_FALSE(control || c1) << text.substr(0, i);
  }
  EXPECT_EQ(("\n" + text).find("\nForged"), std::string::npos) << text;
  EXPECT_NE(text.find(seen), std::string::npos) << text;
}

TEST(Words, EveryNumberHasItsOwn) {
  std::vector<std::int32_t> numbers;
#define HY_FAILURE_NUMBER(name, number) numbers.push_back(number);
#define HY_RETURN_CODE(name, number) numbers.push_back(number);
#include "hy_wristlog/failure_numbers.inc"
  constexpr std::int32_t NoNumber = -1;
  for (const std::int32_t number : numbers) {
    EXPECT_NE(meaningOf(number), meaningOf(NoNumber)) << number;
    EXPECT_NE(pendrelExplanationOf(number, 0), meaningOf(NoNumber)) << number;
  }
}

TEST(Words, ALoggersTextsCommandNoTerminalAndForgeNoLine) {
  const std::string shown = R"(\x1B[2J\x0D\x0AForged)";
  const TemporaryFolder folder;
  const std::string made = folder / ("made" + Hostile);
  for (const char* model : {"vivid", "kestrin2"}) {
    const bool vivid = std::string(model) == "vivid";
    const sim::Bench bench = vivid ? sim::makeVividBench() : sim::makeKestrin2Bench();
    const hy_wristlog::platform::WorldScope scope(bench.World);
    sim::RecordingSetup setup = sim::ordinarySetup(*bench.World, sim::Mode::Activity, 60);
    setup.Subject.Identity = Hostile;
    setup.Subject.Initials = "\x1B\n\r";
    setup.ZoneName = "\x1B\n\r";
    bench.Logger->setUp(setup);
    bench.Logger->block().setText(sim::block::SerialNumber, Hostile);
    bench.Logger->wear(std::chrono::hours(2));

    expectHarmless({"docks", "--probe"}, "Collecting Data");
    expectHarmless({"status", "--model", model}, shown);
    expectHarmless({"config", "show", "--model", model}, shown);
    expectHarmless({"config", "image", "--model", model, "--out", made + ".bin", "--force"}, shown);
    expectHarmless({"retrieve", "--model", model, "--ignore-warnings", "--out", made, "--force"}, shown);
    const std::string config = made + "/config.ini", raw = made + "/raw.bin";
    expectHarmless({"decode", "--config", config, "--raw", raw, "--out", made + " again", "--force"}, shown);
    expectHarmless({"plot", made, "--force"}, shown);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"raw", "dump"}, {"report"}, {"krd"}}) {
      std::vector<std::string> words = command;
      words.insert(words.end(), {made, "--force", "--out", folder / (Hostile + command.back())});
      expectHarmless(words, shown);
    }
    expectHarmless({"raw", "load", folder / (Hostile + "dump"), "--force", "--out", made + ".raw"}, shown);
    expectHarmless({"config", "export", made, "--out", folder / "x.ini"}, "holds a line break");
    expectHarmless({"config", "import", made, "--ini", config, "--out", made + ".ini"}, shown);
    expectHarmless({"configure", "--model", model, "--mode", vivid ? "5" : "3", "--epoch", "60", "--erase",
                    "--identity", Hostile},
                   shown);
  }
  expectHarmless({"raw", "dump", made + "none", "--out", folder / "x"}, shown);
  expectHarmless({"status", "--model", Hostile}, "vivid");
}

/// A Kestrin Vivid that has recorded for three days, and what `retrieve` tells when the link fails.
struct BrokenLink {
  sim::Bench bench = sim::makeVividBench();
  hy_wristlog::platform::WorldScope scope{bench.World};
  TemporaryFolder folder;

  BrokenLink() {
    bench.Logger->setUp(sim::ordinarySetup(*bench.World, sim::Mode::ActivityAndStandardLight, 60));
    bench.Logger->wear(std::chrono::hours(72));
    bench.World->advance(std::chrono::seconds(20));
  }
  std::string retrieve(const std::string& into = "made", const std::vector<std::string>& more = {}) {
    std::vector<std::string> words{"retrieve", "--model", "vivid", "--out", folder / into};
    words.insert(words.end(), more.begin(), more.end());
    return told(words);
  }
  std::string content(const std::string& name) { return hy_wristlog::contentOf(folder / name); }
  bool has(const std::string& name) { return std::filesystem::exists(folder / name); }
};

TEST(BrokenRetrieval, KeepsTheBeginningUntilTheWholeComes) {
  BrokenLink desk;
  auto& dock = *desk.bench.Dock;
  const auto breakAfter = [&](std::uint64_t bytes) { dock.unplugAfterBytes(bytes); };
  const auto again = [&](const std::string& into = "made") {
    if (!dock.plugged()) dock.plug();
    desk.bench.World->advance(std::chrono::seconds(60));
    return into;
  };
  breakAfter(5000);
  const std::string first = desk.retrieve();
  const std::string state =
      " of 22 KB. The recording is still in the logger, which was stopped and records no more.";
  expectIn(first, {"The dock was disconnected during the download, after ", state, " Connect the dock",
                   "The beginning of the recording came: ", ", until 2026-", "Written to"});
  EXPECT_EQ(first.find("Docks.INI"), std::string::npos) << first;
  EXPECT_FALSE(desk.has("made/raw.bin") || desk.has("made/series.csv"));
  const std::string shortPart = desk.content("made/raw.partial.bin");
  ASSERT_GT(shortPart.size(), 1000U);

  const std::string made = desk.folder / "made";
  expectIn(told({"decode", made, "--out", made, "--force"}), {"Only the beginning of a recording: "});
  expectIn(told({"plot", made, "--force"}), {"Only the beginning of a recording: "});
  expectIn(desk.content("made/recording.json"), {"\"part\": true", "Only the beginning"});
  expectIn(desk.content("made/actogram.svg"), {"Beginning of a recording of "});
  expectIn(told({"report", made, "--out", desk.folder / "r.csv"}), {"is only the beginning of a recording"});
  expectIn(told({"report", made, "--out", desk.folder / "u.csv", "--unchecked"}),
           {"Only the beginning of a recording: "});
  const std::string partSeries = desk.content("made/series.partial.csv");
  EXPECT_FALSE(desk.has("made/series.csv") || desk.has("r.csv"));

  // A shorter part is not kept, a longer one is, and what was made of the former goes.
  again();
  breakAfter(3500);
  expectIn(desk.retrieve(), {"was left as it is"});
  EXPECT_EQ(desk.content("made/raw.partial.bin"), shortPart);
  EXPECT_TRUE(desk.has("made/actogram.svg"));
  again();
  breakAfter(9000);
  desk.retrieve();
  const std::string longPart = desk.content("made/raw.partial.bin");
  EXPECT_GT(longPart.size(), shortPart.size());
  EXPECT_FALSE(desk.has("made/actogram.svg") || desk.has("made/series.partial.csv"));
  again();
  expectIn(desk.retrieve(), {"The recording is sound."});
  const std::string whole = desk.content("made/raw.bin"), series = desk.content("made/series.csv");
  EXPECT_TRUE(whole.starts_with(longPart) && longPart.starts_with(shortPart));
  EXPECT_TRUE(series.starts_with(partSeries));
  EXPECT_FALSE(desk.has("made/raw.partial.bin"));
  // A part never replaces a whole recording, nor does another recording a part.
  again();
  breakAfter(9000);
  expectIn(desk.retrieve("made", {"--force"}), {"was left as it is"});
  EXPECT_EQ(desk.content("made/raw.bin"), whole);
  EXPECT_FALSE(desk.has("made-2"));
  again();
  breakAfter(9000);
  desk.retrieve("other");
  expectIn(told({"decode", desk.folder / "other", "--out", made, "--force"}), {"does not replace"});
  EXPECT_EQ(desk.content("made/raw.bin"), whole);
  again();
  desk.bench.Logger->setUp(sim::ordinarySetup(*desk.bench.World, sim::Mode::ActivityAndStandardLight, 60));
  desk.bench.Logger->wear(std::chrono::hours(2));
  expectIn(desk.retrieve("other"), {"holds another recording, and was left as it is", "Written to "});
  EXPECT_EQ(desk.content("other/raw.partial.bin").size(), longPart.size());
  EXPECT_TRUE(desk.has("other-2/raw.bin") && desk.has("other-2/series.csv"));
}

TEST(BrokenRetrieval, SaysWhereTheRecordingIsWhetherTheLoggerRecordsAndWhatToDo) {
  const std::tuple<std::string, std::vector<std::string>> cases[] = {
      {"show config", {"was not stopped, and what it holds is still there."}},
      {"acq stop 0", {"may have been stopped, or still record. Retrieve it again."}},
      {"data avail 0",
       {"was read whole. Only the logger could not be told so: it did not answer any more. The "
        "recording is still in the logger, which was stopped and records no more.",
        "The recording is sound.", "Written to"}}};
  for (const auto& [command, words] : cases) {
    SCOPED_TRACE(command);
    BrokenLink desk;
    std::string typed;
    desk.bench.line().Tap = [&, command = command](sim::Direction direction, std::uint8_t byte) {
      if (direction != sim::Direction::ToLogger) return;
      byte == '\r' ? typed.clear() : typed.push_back(static_cast<char>(byte));
      if (typed == command) desk.bench.line().cutNow();
    };
    const std::string text = desk.retrieve();
    expectIn(text, words);
    EXPECT_EQ(text.find("does not answer.") != std::string::npos, command != "data avail 0") << text;
  }
}

TEST(Words, APendrelsTextsDoNeither) {
  const TemporaryFolder folder;
  const std::string made = folder / ("made" + Hostile), seen = R"(\x1B[2J)";
  const sim::PendrelBench bench = sim::makePendrelBench();
  const hy_wristlog::platform::WorldScope scope(bench.World);
  sim::PendrelSetup setup = sim::ordinaryPendrelSetup(*bench.World, 60);
  const std::string unreadable = setup.Subject.replace(1, Hostile.size(), Hostile);
  setup.Subject.replace(5, 2, "  ");
  bench.Logger->setUp(setup);
  bench.Logger->wear(std::chrono::hours(2));
  expectHarmless({"legacy", "find-port"}, "COM1");
  expectHarmless({"legacy", "status"}, "Worn by S" + seen);
  expectHarmless({"legacy", "retrieve", "--repair", "--out", made}, "Written to");
  expectHarmless({"legacy", "export-krc", "--repair", made + ".krc"}, "Written to");
  expectHarmless({"legacy", "battery-date"}, "battery of");
  setup.Subject = unreadable;
  bench.Logger->setUp(setup);
  expectHarmless({"legacy", "status"}, "  S" + seen);
  expectHarmless({"legacy", "configure", "--mode", "1", "--epoch", "60", "--erase", "--identity", Hostile},
                 seen);
}

}  // namespace
}  // namespace wristlog
