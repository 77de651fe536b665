#include <algorithm>
#include <functional>

#include "apps/pty.h"
#include "tools/Class_Base64Class.h"

namespace {

const std::string Status = "console --model vivid --simulate vivid --speed 0";
const std::string SlowRetrieval = "console --model vivid --simulate vivid --workflow retrieve --speed 5";
const std::string SlowestRetrieval = "console --model vivid --simulate vivid --workflow retrieve --speed 0.5";
const std::string F2 = "\x1BOQ", F3 = "\x1BOR", F4 = "\x1BOS", CtrlC = "\x03";
constexpr const char* LeavesScreen = "\x1B[?1049l";

/// What the last clipboard sequence holds.
std::string clipboard(const std::string& output) {
  const std::string begin = "\x1B]52;c;";
  const std::size_t at = output.rfind(begin);
  if (at == std::string::npos) return {};
  const std::size_t from = at + begin.size();
  const auto bytes = hy_wristlog::Class_Base64Class::fncDecodeToByteArray(
      std::string_view(output).substr(from, output.find('\a', from) - from));
  return {bytes.begin(), bytes.end()};
}

TEST(DebuggerScreen, ShowsTheTrafficAndItsButtons) {
  const Sandbox box;
  TerminalRun run(box, Status, "xterm-256color", {24, 80, 0, 0});
  ASSERT_TRUE(run.shows("Code 0: Success. Collecting Data")) << run.All;
  for (const char* part : {"Communications Debugger: status, Kestrin Vivid, simulated", "show clock time",
                           "q Quit", "F1 ?", "F2 Clear", "F3 Copy Selection", "F4 Copy All Text",
                           "F5 Generate Data Overrun", "Last error:", "Chars in RX buffer:"})
    EXPECT_NE(run.Last.find(part), std::string::npos) << part;

  run.type("?");
  ASSERT_TRUE(run.shows("Any key closes this list.")) << run.Last;
  run.type("q");
  run.type("abcXYZ\x16\x13\x1B[99~\x1Bj\xC3\xA4\x80\xFF" + F3);  // no keys but the last
  ASSERT_TRUE(run.shows("Code 0: Success. Collecting Data"));
  EXPECT_EQ(clipboard(run.All), "") << "without a selection";

  run.type(F4);
  ASSERT_TRUE(run.shows("Sent all text to the terminal's clipboard."));
  const std::string all = clipboard(run.All);
  EXPECT_NE(all.find(">show ver\n"), std::string::npos) << all;
  EXPECT_EQ(all.find("abcXYZ"), std::string::npos);

  run.type("\x1BOH \x1BOB\x1BOC" + F3);
  ASSERT_TRUE(run.shows("Sent the selection"));
  const std::size_t firstLine = all.find('\n') + 1;
  EXPECT_EQ(clipboard(run.All), all.substr(0, firstLine + 1)) << "from the start a line down and one right";
  for (const auto& [rows, columns] :
       {std::pair<unsigned short, unsigned short>{3, 10}, {1, 1}, {2, 3}, {70, 250}})
    run.resize(rows, columns), run.type("\x1BOF\x1B[5~");
  ASSERT_TRUE(run.shows("Last error:"));
  run.type(F2);
  ASSERT_TRUE(run.shows("Chars in RX buffer:"));
  EXPECT_EQ(run.Last.find("show"), std::string::npos) << run.Last;
  run.type("q");
  EXPECT_EQ(run.finish(), 0);
  EXPECT_TRUE(run.isRestored());
  EXPECT_GT(run.All.rfind("Code 0: Success. Collecting Data\r\n"), run.All.rfind(LeavesScreen))
      << "the result stays behind the screen";
}

TEST(DebuggerScreen, RestoresTheTerminalHoweverItEnds) {
  const Sandbox box;
  box.write("file", "in the way");
  using Act = std::function<void(TerminalRun&)>;
  const auto againAndAgain = [](int number) -> Act {
    return [number](TerminalRun& run) {
      for (int i = 0; i < 20000; ++i) run.signal(number);
    };
  };
  const Act stopAndLeave = [](TerminalRun& run) {
    run.type(CtrlC);
    ASSERT_TRUE(run.shows("Code 10013")) << run.Last;
    run.type(CtrlC);
  };
  const std::tuple<std::string, Act, int> cases[] = {
      {SlowRetrieval, stopAndLeave, 1 << 8},
      {SlowestRetrieval, againAndAgain(SIGINT), SIGINT},
      {SlowestRetrieval, againAndAgain(SIGTERM), SIGTERM},
      {SlowRetrieval, [](TerminalRun& run) { run.type("\x1C"); }, SIGQUIT},
      {SlowRetrieval + " --out file", [](TerminalRun&) {}, 1 << 8}};
  for (const auto& [options, end, expected] : cases) {
    SCOPED_TRACE(options);
    TerminalRun run(box, options);
    ASSERT_TRUE(run.writes("Communications Debugger")) << run.All;
    end(run);
    const int status = run.finish();
    EXPECT_EQ(status & ~0x80, expected)
        << run.All.substr(run.All.size() - std::min<std::size_t>(run.All.size(), 300));
    EXPECT_TRUE(run.isRestored());
    EXPECT_NE(run.All.find(LeavesScreen), std::string::npos);
    EXPECT_EQ(run.All.find("\x1B[?1049h", run.All.find(LeavesScreen)), std::string::npos);
  }
  TerminalRun closed(box, SlowRetrieval);
  ASSERT_TRUE(closed.writes("Communications Debugger"));
  closed.hangUp();
  EXPECT_NE(closed.finish(), -1) << "a terminal that was closed ends it";
}

/// A dock in which something answers that is no logger: real time, real waits.
TEST(DebuggerScreen, KeysWorkWhileTheLineIsSilentAndBytesCommandNothing) {
  const Sandbox box;
  int dock = -1;
  int line = -1;
  termios raw{};
  ::cfmakeraw(&raw);
  char device[128];
  ASSERT_EQ(::openpty(&dock, &line, device, &raw, nullptr), 0);
  box.write("Docks.INI",
            std::string("[Dock 1]\nVendorID=5245\nProductID=4000\nCOMport=60\nDevice=") + device + "\n");
  TerminalRun run(box, "console --model vivid");
  pollfd asked{dock, POLLIN, 0};
  ASSERT_GT(::poll(&asked, 1, TerminalRun::Patience * 1000), 0) << "it asks for the prompt";
  ASSERT_GT(::write(dock, "\x1B[2J\x9B\a", 6), 0);
  ASSERT_TRUE(run.shows("\\x1B[2J")) << run.Last;
  run.type("q");
  ASSERT_TRUE(run.shows("Code 10013: Aborted")) << run.Last;
  run.type("q");
  EXPECT_EQ(run.finish(), 1 << 8);
  EXPECT_TRUE(run.isRestored());
  ::close(dock);
  ::close(line);
}

TEST(DebuggerScreen, SaysWhatItCannotDo) {
  const Sandbox box;
  const std::pair<std::string, const char*> cases[] = {
      {Status, "needs a terminal"},
      {Status + " --json", "--json"},
      {Status + " --out x", "--workflow retrieve"},
      {Status + " --workflow erase", "--workflow"},
      {"console --model vivid --simulate vivid --speed nan", "--speed"}};
  for (const auto& [arguments, words] : cases) {
    const Outcome outcome = box.run(arguments);
    EXPECT_EQ(outcome.Status, 2) << arguments;
    EXPECT_NE((outcome.Out + outcome.Err).find(words), std::string::npos) << outcome.Err;
  }
  for (const char* terminal : {"dumb", "no-such-terminal", "''"}) {
    TerminalRun run(box, Status, terminal);
    EXPECT_EQ(run.finish(), 2 << 8) << terminal;
    EXPECT_NE(run.All.find("cannot show a screen"), std::string::npos) << run.All;
    EXPECT_TRUE(run.isRestored());
  }
}

}  // namespace
