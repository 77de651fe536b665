#include <gtest/gtest.h>

#include "simulator/line.h"
#include "simulator/uart.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

using platform::LineParity;
using platform::LineSettings;
using platform::LineStopBits;

TEST(Line, CharacterTimes) {
  const struct {
    LineSettings Settings;
    std::int64_t Nanoseconds;
  } cases[] = {{{57600, LineParity::None, 8, LineStopBits::Two}, 190972},
               {{57600, LineParity::Even, 8, LineStopBits::One}, 190972},
               {{600, LineParity::None, 8, LineStopBits::One}, 16666667},
               {{110, LineParity::Odd, 7, LineStopBits::OneAndHalf}, 95454545}};
  for (const auto& c : cases) EXPECT_EQ(characterTime(c.Settings).count(), c.Nanoseconds);
}

TEST(Line, BytesArriveAtTheirMoments) {
  Timeline time{0ns};
  SimulatedLine line{time, LoggerLine};
  line.portOpened();
  line.setPcSettings(LoggerLine);
  std::vector<std::int64_t> moments;
  line.listen([&](std::uint8_t) { moments.push_back(time.now().count()); });
  const std::vector<std::uint8_t> bytes(1000, 'x');
  EXPECT_EQ(line.write(bytes), 1000U);
  time.advanceTo(190971ns);
  EXPECT_TRUE(moments.empty());
  EXPECT_EQ(line.outstanding(), 1000U);
  time.advance(1s);
  ASSERT_EQ(moments.size(), 1000U);
  EXPECT_EQ(moments.front(), 190972);
  EXPECT_NEAR(static_cast<double>(moments.back()), 1000 * 11e9 / 57600, 1000.0);
  EXPECT_EQ(line.outstanding(), 0U);
  EXPECT_EQ(line.traffic().BusyToLogger.count(), 190972000);
}

TEST(Line, WrongSettingsGiveGarbage) {
  const std::string text = "Show CONFIG 0123456789\r";
  const struct {
    const char* Name;
    LineSettings Pc;
    bool Same, Framing, Parity;
  } cases[] = {{"one stop bit", {57600, LineParity::None, 8, LineStopBits::One}, true, false, false},
               {"even parity", {57600, LineParity::Even, 8, LineStopBits::One}, true, false, true},
               {"seven bits", {57600, LineParity::None, 7, LineStopBits::One}, true, true, false},
               {"half speed", {28800, LineParity::None, 8, LineStopBits::Two}, false, false, false},
               {"double speed", {115200, LineParity::None, 8, LineStopBits::Two}, false, true, false},
               {"a sixth", {9600, LineParity::None, 8, LineStopBits::One}, false, false, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Timeline time{0ns};
    SimulatedLine line{time, LoggerLine};
    line.portOpened();
    line.setPcSettings(c.Pc);
    line.send({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    time.advance(1s);
    std::string heard(200, '\0');
    heard.resize(line.read({reinterpret_cast<std::uint8_t*>(heard.data()), heard.size()}));
    const platform::LineErrors errors = line.takeErrors();
    EXPECT_EQ(heard == text, c.Same);
    EXPECT_EQ(errors.Parity > 0, c.Parity);
    EXPECT_EQ(errors.Framing > 0, c.Framing);
    EXPECT_EQ(line.takeErrors().Framing, 0U);
  }
}

TEST(Line, ReceiveBufferOverflowsAndOverruns) {
  Timeline time{0ns};
  SimulatedLine line{time, LoggerLine};
  line.portOpened();
  line.setPcSettings(LoggerLine);
  line.ReceiveCapacity = 10;
  line.Faults.OverrunToPc = once(3);
  line.send(std::vector<std::uint8_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  time.advance(1s);
  std::vector<std::uint8_t> heard(20);
  heard.resize(line.read(heard));
  EXPECT_EQ(heard, (std::vector<std::uint8_t>{0, 1, 2, 4, 5, 6, 7, 8, 9, 10}));
  const platform::LineErrors errors = line.takeErrors();
  EXPECT_EQ(errors.Overrun, 1U);
  EXPECT_EQ(errors.BufferOverflow, 2U);
}

TEST(Line, AnAdapterMayHoldBytesBack) {
  Timeline time{0ns};
  SimulatedLine line{time, LoggerLine};
  line.portOpened();
  line.setPcSettings(LoggerLine);
  line.HoldBack = 16ms;
  std::string tapped;
  line.Tap = [&](Direction direction, std::uint8_t byte) {
    tapped += direction == Direction::ToPc ? static_cast<char>(byte) : '?';
  };
  line.send(std::vector<std::uint8_t>{'a', 'b', 'c'});
  std::vector<std::uint8_t> heard(20);
  time.advance(16ms);
  EXPECT_EQ(tapped, "abc");
  EXPECT_EQ(line.read(heard), 0U);
  time.advance(1ms);
  EXPECT_EQ(line.read(heard), 3U);
}

TEST(Line, FaultsStrikeTheirBytes) {
  const struct {
    const char* Name;
    std::function<void(LineFaults&)> Set;
    std::string ToLogger, ToPc;
  } cases[] = {
      {"none", [](LineFaults&) {}, "abcdef", "uvwxyz"},
      {"lost",
       [](LineFaults& f) {
         f.LoseToLogger = once(1), f.LoseToPc = {0, 2};
       },
       "acdef", "wxyz"},
      {"altered", [](LineFaults& f) { f.AlterToLogger = once(), f.AlterToPc = once(5); }, "ebcdef", "uvwxy~"},
      {"cut to logger", [](LineFaults& f) { f.CutAfterToLogger = 2; }, "ab", "u"},
      {"cut to PC", [](LineFaults& f) { f.CutAfterToPc = 0; }, "", ""},
      {"cut in all", [](LineFaults& f) { f.CutAfterTotal = 5; }, "abc", "uv"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Timeline time{0ns};
    SimulatedLine line{time, LoggerLine};
    line.portOpened();
    line.setPcSettings(LoggerLine);
    c.Set(line.Faults);
    std::string heard;
    line.listen([&](std::uint8_t byte) { heard += static_cast<char>(byte); });
    line.write(std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e', 'f'});
    time.advance(1us);
    line.send(std::vector<std::uint8_t>{'u', 'v', 'w', 'x', 'y', 'z'});
    time.advance(1s);
    std::string read(20, '\0');
    read.resize(line.read({reinterpret_cast<std::uint8_t*>(read.data()), read.size()}));
    EXPECT_EQ(heard, c.ToLogger);
    EXPECT_EQ(read, c.ToPc);
    EXPECT_EQ(line.traffic().total(), 12U);
    line.reconnect();
    line.send(std::vector<std::uint8_t>{'!'});
    time.advance(1s);
    EXPECT_EQ(line.read({reinterpret_cast<std::uint8_t*>(read.data()), 0U}), 0U);
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
