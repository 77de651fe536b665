#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

/// A line with an open port and a listener in the logger's place.
struct Ends {
  Ends() {
    Line.portOpened();
    Line.setPcSettings(LoggerLine);
    Line.listen([this](std::uint8_t byte) { Heard += static_cast<char>(byte); });
  }
  static std::vector<std::uint8_t> bytes(const std::string& text) { return {text.begin(), text.end()}; }
  std::string read() {
    std::vector<std::uint8_t> all(200);
    all.resize(Line.read(all));
    return textOf(all);
  }
  Timeline Time{0ns};
  SimulatedLine Line{Time, LoggerLine};
  std::string Heard;
};

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

}  // namespace
}  // namespace hy_wristlog::simulator
