#include "support/failures.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

using namespace platform;

/// A line with an open port and a listener in the logger's place.
struct Ends {
  explicit Ends(const LineSettings& pc = LoggerLine, const LineSettings& far = LoggerLine) : Line{Time, far} {
    Line.portOpened();
    Line.setPcSettings(pc);
    Line.listen([this](std::uint8_t byte) {
      Heard += static_cast<char>(byte);
      Moments.push_back(Time.now().count());
    });
  }
  static std::vector<std::uint8_t> bytes(const std::string& text) { return {text.begin(), text.end()}; }
  std::string read() {
    std::vector<std::uint8_t> all(200);
    all.resize(Line.read(all));
    return textOf(all);
  }
  Timeline Time{0ns};
  SimulatedLine Line;
  std::string Heard;
  std::vector<std::int64_t> Moments;
};

TEST(Line, BytesArriveAtTheirMoments) {
  const std::pair<LineSettings, std::int64_t> cases[] = {
      {{57600, LineParity::None, 8, LineStopBits::Two}, 190972},
      {{110, LineParity::Odd, 7, LineStopBits::OneAndHalf}, 95454545}};
  for (const auto& [settings, each] : cases) {
    Ends ends{settings, settings};
    ends.Line.write(std::vector<std::uint8_t>(1000, 'x'));
    ends.Time.advanceTo(nanoseconds{each - 1});
    EXPECT_EQ(ends.Line.outstanding(), 1000U);
    ends.Time.advance(100s);
    EXPECT_EQ(ends.Moments.front(), each);
    EXPECT_NEAR(static_cast<double>(ends.Moments.back()), 1e3 * static_cast<double>(each), 1e6);
    EXPECT_EQ(ends.Moments.size(), 1000U);
  }
}

TEST(Line, WrongSettingsGiveGarbage) {
  const std::string text = "Show CONFIG 0123456789\r";
  const std::tuple<LineSettings, bool, bool, bool> cases[] = {
      {{57600, LineParity::None, 8, LineStopBits::One}, true, false, false},
      {{57600, LineParity::Even, 8, LineStopBits::One}, true, false, true},
      {{57600, LineParity::None, 7, LineStopBits::One}, true, true, false},
      {{28800, LineParity::None, 8, LineStopBits::Two}, false, false, false},
      {{115200, LineParity::None, 8, LineStopBits::Two}, false, true, false}};
  for (const auto& [settings, same, framing, parity] : cases) {
    Ends ends{settings};
    ends.Line.send(Ends::bytes(text));
    ends.Time.advance(1s);
    const platform::LineErrors errors = ends.Line.takeErrors();
    EXPECT_EQ(ends.read() == text, same) << settings.Baud;
    EXPECT_EQ(errors.Parity > 0, parity) << settings.Baud;
    EXPECT_EQ(errors.Framing > 0, framing) << settings.Baud;
  }
}

TEST(Line, FaultsStrikeTheirBytes) {
  const std::tuple<void (*)(SimulatedLine&), std::string, std::string> cases[] = {
      {[](auto&) {}, "abcdef", "uvwxyz"},
      {[](auto& l) { l.Faults.LoseToLogger = once(1), l.Faults.LoseToPc = once(); }, "acdef", "vwxyz"},
      {[](auto& l) { l.Faults.AlterToLogger = once(), l.Faults.AlterToPc = once(5); }, "ebcdef", "uvwxy~"},
      {[](auto& l) { l.Faults.CutAfterToLogger = 2; }, "ab", "u"},
      {[](auto& l) { l.Faults.CutAfterToPc = 0; }, "", ""},
      {[](auto& l) { l.Faults.CutAfterTotal = 5; }, "abc", "uv"},
      {[](auto& l) { l.Faults.OverrunToPc = once(3), l.ReceiveCapacity = 4; }, "abcdef", "uvwy"},
  };
  for (const auto& [set, toLogger, toPc] : cases) {
    Ends ends;
    set(ends.Line);
    ends.Line.write(Ends::bytes("abcdef"));
    ends.Time.advance(1us);
    ends.Line.send(Ends::bytes("uvwxyz"));
    ends.Time.advance(1s);
    EXPECT_EQ(ends.Heard, toLogger);
    EXPECT_EQ(ends.read(), toPc);
    EXPECT_EQ(ends.Line.takeErrors().Overrun, toPc == "uvwy" ? 1U : 0U);
  }
}

TEST(Quillander, WakesItsLoggerByAPulse) {
  const std::tuple<int, int, std::string> cases[] = {
      {0, 500, ""}, {10, 500, ""}, {100, 30, ""}, {100, 45, "\r>"}};
  for (const auto& [high, rest, answer] : cases) {
    Wire wire;
    wire.connect(high, rest);
    EXPECT_EQ(wire.exchange("\r"), answer) << high << ' ' << rest << ": closing put it to sleep";
    wire.connect();
    EXPECT_EQ(wire.exchange("\r"), "\r>");
    wire.Lab.Dock->pullOut();
    EXPECT_EQ(wire.exchange("\r"), "");
    wire.Lab.Dock->insert(*wire.Lab.Logger);
    EXPECT_EQ(wire.exchange("\r"), "") << "seated anew it sleeps";
  }
}

TEST(Tolka, DsrFollowsDtrWhenALoggerIsSeated) {
  Wire wire{kestrin2BenchOptions()};
  const auto dsrAfter = [&](int wait) {
    wire.wait(wait);
    return wire.Port->modemLines().Dsr;
  };
  EXPECT_TRUE(dsrAfter(0));
  wire.Port->setDtr(false);
  EXPECT_TRUE(dsrAfter(29));
  EXPECT_FALSE(dsrAfter(2));
  EXPECT_EQ(wire.exchange("\r"), "");
  wire.Port->setDtr(true);
  EXPECT_FALSE(dsrAfter(119));
  EXPECT_TRUE(dsrAfter(2));
  EXPECT_EQ(wire.exchange("show config\r"), "show config\r");
  wire.Port->setDtr(false);
  wire.Port->setDtr(true);
  EXPECT_FALSE(dsrAfter(0)) << "even a moment's drop lets the logger go";
  wire.wait(200);
  EXPECT_EQ(wire.exchange("\r"), "\r>") << "and ends its transfer";
  wire.Lab.Dock->pullOut();
  EXPECT_FALSE(dsrAfter(0));
  wire.Lab.Dock->insert(*wire.Lab.Logger);
  EXPECT_TRUE(dsrAfter(200));
  BenchOptions wrongModel = kestrin2BenchOptions();
  wrongModel.Logger = {};
  EXPECT_FALSE(Wire{wrongModel}.Port->modemLines().Dsr);
}

TEST(Dock, ComesAndGoes) {
  Wire wire;
  SimulatedDock& dock = *wire.Lab.Dock;
  const auto open = [&] { wire.Lab.World->serialPorts().open(33); };
  EXPECT_EQ(numberOf(open), 8005) << "held by this very handle";
  dock.pullOutAfterBytes(5);
  EXPECT_EQ(wire.exchange("show ver\r"), "sh") << "what the logger was about to say is lost with it";
  dock.insert(*wire.Lab.Logger);
  wire.connect();
  dock.unplugAfterBytes(3);
  EXPECT_EQ(numberOf([&] { wire.exchange("show ver\r"); }), 8015);
  platform::SerialPort& port = *wire.Port;
  for (const std::function<void()>& use : std::initializer_list<std::function<void()>>{
           [&] { port.discardInput(); }, [&] { port.setRts(true); }, [&] { port.modemLines(); }})
    EXPECT_EQ(numberOf(use), 8015);
  EXPECT_EQ(numberOf(open), 8002);
  dock.plug();
  EXPECT_EQ(numberOf([&] { wire.exchange(""); }), 8015) << "the old handle stays dead";
  wire.Port.reset();
  dock.Faults.Open = {8018, {1, 2}};
  for (const std::int32_t expected : {0, 8018, 8018, 0}) EXPECT_EQ(numberOf(open), expected);
  wire.connect();
  EXPECT_EQ(wire.exchange("\r"), "\r>");
}

}  // namespace
}  // namespace hy_wristlog::simulator
