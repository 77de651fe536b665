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

BenchOptions vividWith(const std::string& firmware) {
  BenchOptions options = vividBenchOptions();
  options.Logger.Firmware = firmware;
  return options;
}

TEST(Shell, AnswersToTheByte) {
  const BenchOptions vivid = vividBenchOptions();
  const std::string version = valueLine("01.01.0007 01.02"), battery = "show battery\r",
                    clock = "show clock time\r";
  const auto sound = [](LoggerFaults&) {};
  const std::tuple<BenchOptions, void (*)(LoggerFaults&), std::string, std::string> cases[] = {
      {vivid, sound, "show ver\r", "show ver\r" + version},
      {vivid, sound, battery, battery + valueLine("3.050 02032026 3.016")},
      {vividWith("00.02.0001"), sound, battery, battery + valueLine("3.050 02032026")},
      {vivid, sound, "acq stop 12x\r", "acq stop 12x\r?\r>"},
      {vividWith("00.01.0029"), sound, "sleep 0\r", "sleep 0\r?\r>"},
      {vivid, sound, "sh\n\x18\x18\t\x7F\xE9ow ver\r", "show ver\r" + version},
      {vivid, [](auto& f) { f.DelayEcho = once(1); }, "ab", "a"},
      {vivid, sound, "show clock mode\r", "show clock mode\r" + valueLine("12")},
      {vivid, [](auto& f) { f.GarbledClock = once(); }, clock, clock + valueLine("--:--:--")},
      {vivid, [](auto& f) { f.IgnoreCommand = once(); }, "show ver\r", "show ver"}};
  for (const auto& [options, spoil, typed, answer] : cases) {
    Wire wire{options};
    spoil(wire.Lab.Logger->Faults);
    EXPECT_EQ(wire.exchange(typed), answer);
    EXPECT_EQ(wire.exchange("", 1500), answer == "a" ? "b" : "") << "a late echo still comes";
  }
}

TEST(Receiving, StoresTheBlockAndRenewsItsChecksum) {
  std::string sent(256, '\0');
  for (std::size_t i = 0; i < 192; ++i) sent[i] = static_cast<char>('0' + i % 50);
  const std::string one = frameOf(1, sent.substr(0, 128)), two = frameOf(2, sent.substr(128)), end = "\x04";
  std::string badData = two, badComplement = one;
  badData[50] ^= 1, badComplement[2] ^= 1;
  const struct {
    TransferFaults Faults;
    std::vector<std::string> Frames;
    std::string Answers;
    bool Stored = true;
  } cases[] = {{{}, {one, two, end}, "C\x06\x06\x06>"},
               {{}, {badComplement, one, badData, two, end}, "C\x15\x06\x15\x06\x06>"},
               {{}, {one, "\x18\x18"}, "C\x06", false},
               {{}, {frameOf(1, sent + std::string(768, '\x1A')), end}, "C\x06\x06>"},
               {{.NakPacket = {1, 2}}, {one, two, two, two, end}, "C\x06\x15\x15\x06\x06>"},
               {{.LoseAnswer = once()}, {one, one, two, end}, "C\x06\x06\x06>"},
               {{.CancelReceive = once(1)}, {one, two}, "C\x06\x18\x18", false}};
  for (const auto& c : cases) {
    Wire wire;
    wire.Lab.Logger->Faults.Transfer = c.Faults;
    const std::string before = imageOf(*wire.Lab.Logger);
    std::string answers = wire.exchange("config\r");
    for (const std::string& frame : c.Frames) answers += wire.exchange(frame, 1100);
    EXPECT_EQ(answers, "config\r" + c.Answers);
    const std::string after = imageOf(*wire.Lab.Logger);
    EXPECT_EQ(after.substr(2, 62), before.substr(2, 24) + '\xFF' + before.substr(27, 37));
    EXPECT_EQ(after.substr(64) == sent.substr(0, 192), c.Stored);
    EXPECT_EQ(wireCrc(after.substr(2)),
              static_cast<std::uint8_t>(after[0]) + static_cast<std::uint8_t>(after[1]) * 256U);
    EXPECT_EQ(wire.exchange("\r"), "\r>");
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
