#include <gtest/gtest.h>

#include <filesystem>

#include "cli/cli.h"
#include "simulator/bench.h"
#include "support/surroundings.h"
#include "words/meanings.h"

namespace wristlog {
namespace {

namespace sim = hy_wristlog::simulator;
using hy_wristlog::TemporaryFolder;

/// Clears the screen, and puts a line of its own under the program's.
const std::string Hostile = "\x1B[2J\r\nForged\x9D";

/// All that a command tells people, run in the thread's world.
std::string told(const std::vector<std::string>& arguments) {
  CommandLine cli;
  addCommands(cli);
  std::vector<std::string> words = arguments;
  words.insert(words.begin(), "wristlog");
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  cli.run(static_cast<int>(pointers.size()), pointers.data());
  const std::string out = testing::internal::GetCapturedStdout();
  return out + testing::internal::GetCapturedStderr();
}

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

    expectHarmless({"docks"}, "Collecting Data");
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
    expectHarmless(
        {"configure", "--model", model, "--mode", vivid ? "5" : "3", "--epoch", "60", "--identity", Hostile},
        shown);
  }
  expectHarmless({"raw", "dump", made + "none", "--out", folder / "x"}, shown);
  expectHarmless({"status", "--model", Hostile}, "vivid");
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
  expectHarmless({"legacy", "configure", "--mode", "1", "--epoch", "60", "--identity", Hostile}, seen);
}

}  // namespace
}  // namespace wristlog
