#include <gtest/gtest.h>

#include "simulator/calendar.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

BenchOptions vividWith(const std::string& firmware) {
  BenchOptions options = vividBenchOptions();
  options.Logger.Firmware = firmware;
  return options;
}

TEST(Shell, AnswersToTheByte) {
  const struct {
    const char* Name;
    BenchOptions Options;
    std::string Typed, Answer;
  } cases[] = {
      {"prompt", vividBenchOptions(), "\r", "\r>"},
      {"Vivid's version", vividBenchOptions(), "show ver\r", "show ver\r" + valueLine("01.01.0007 01.02")},
      {"Kestrin 2's version", kestrin2BenchOptions(), "show ver\r", "show ver\r" + valueLine("01.00.0012")},
      {"battery", vividBenchOptions(), "show battery\r",
       "show battery\r" + valueLine("3.050 02032026 3.016")},
      {"old battery", vividWith("00.02.0001"), "show battery\r",
       "show battery\r" + valueLine("3.050 02032026")},
      {"clock mode", vividBenchOptions(), "show clock mode\r", "show clock mode\r" + valueLine("12")},
      {"clock", vividBenchOptions(), "show clock time\r", "show clock time\r" + valueLine("1772460000")},
      {"memory", vividBenchOptions(), "debug mem r 0x1F\r", "debug mem r 0x1F\r" + valueLine("0xFF")},
      {"setter", vividBenchOptions(), "data avail 1\r", "data avail 1\r>"},
      {"unknown", vividBenchOptions(), "shut down\r", "shut down\r?\r>"},
      {"bad number", vividBenchOptions(), "acq stop 12x\r", "acq stop 12x\r?\r>"},
      {"too great", vividBenchOptions(), "clock time 4294967296\r", "clock time 4294967296\r?\r>"},
      {"no sleep", vividWith("00.01.0029"), "sleep 0\r", "sleep 0\r?\r>"},
      {"control bytes", vividBenchOptions(), "sh\n\x18\x18\t\x7F\xE9ow ver\r",
       "show ver\r" + valueLine("01.01.0007 01.02")},
      {"CTRL-C", vividBenchOptions(), "show v\x03\r", "show v\r>\r>"},
      {"two lines", vividBenchOptions(), "\r\r", "\r>\r>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Wire wire{c.Options};
    EXPECT_EQ(wire.exchange(c.Typed), c.Answer);
  }
}

TEST(Shell, ForgetsAHalfTypedLineAfterAPause) {
  for (const auto& [pause, answer] : {std::pair{390, "\r?\r>"}, std::pair{410, "\r>"}}) {
    Wire wire;
    EXPECT_EQ(wire.exchange("show", pause), "show");
    EXPECT_EQ(wire.exchange("\r"), answer);
  }
}

TEST(Shell, StoresWhatItIsTold) {
  const struct {
    std::string Command;
    BlockField Field;
    std::uint32_t Before, After;
  } cases[] = {{"data avail 1", block::DataAvailable, 0, 85},
               {"data avail 0", block::DataAvailable, 85, 0},
               {"acq dptr 1FA0", block::NextAddress, 7, 0x1FA0},
               {"acq dptr 100001", block::NextAddress, 7, 7},
               {"acq stop 1772460099", block::StopTime, 5, 1772460099},
               {"acq stop 0", block::StopTime, 5, 5},
               {"acq stop -1", block::StopTime, 5, 0xFFFFFFFF},
               {"clock mode 24", block::DisplayFormats, 0x11, 0x12},
               {"clock mode 12", block::DisplayFormats, 0x10, 0x11},
               {"clock mode 13", block::DisplayFormats, 0x11, 0x11}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Command);
    Wire wire;
    wire.Lab.Logger->block().set(c.Field, c.Before);
    wire.Lab.Logger->block().damageChecksum();
    wire.exchange(c.Command + "\r");
    EXPECT_EQ(wire.Lab.Logger->block().number(c.Field), c.After);
    EXPECT_EQ(wire.Lab.Logger->commands().back(), c.Command);
    // Whatever is stored renews the checksum.
    const bool stored = c.Command != "acq stop 0" && c.Before != c.After;
    EXPECT_EQ(wire.Lab.Logger->block().checksumDamaged(), !stored);
  }
}

TEST(Shell, KeepsItsClockWithItsDrift) {
  BenchOptions options = vividBenchOptions();
  options.Logger.ClockDrift = 100;  // 8.64 s a day
  options.Logger.ClockError = -7;
  Wire wire{options};
  const std::int64_t now = wire.Lab.World->now();
  EXPECT_EQ(wire.exchange("show clock time\r"), "show clock time\r" + valueLine(std::to_string(now - 7)));
  wire.exchange("clock time 1000000\r");
  wire.Lab.World->advance(24h);
  EXPECT_EQ(wire.exchange("show clock time\r"),
            "show clock time\r" + valueLine(std::to_string(1000000 + 86408)));
}

TEST(Shell, ErasesItsMemoryInItsOwnTime) {
  Wire wire;
  wire.exchange("debug mem w 0x2 0xA7\r");
  EXPECT_EQ(wire.exchange("debug mem r 0x2\r"), "debug mem r 0x2\r" + valueLine("0xA7"));
  wire.Lab.Logger->block().set(block::NextAddress, 100);
  EXPECT_EQ(wire.exchange("memory erase\r", 37900), "memory erase\r");
  EXPECT_EQ(wire.exchange("\r", 600), ">") << "deaf while it erases";
  EXPECT_EQ(wire.Lab.Logger->memory().read(2), 0xFF);
  EXPECT_EQ(wire.Lab.Logger->block().number(block::NextAddress), 0U);
}

TEST(Shell, FaultsShowOnTheWire) {
  const std::string clock = "1772460000";
  const struct {
    const char* Name;
    std::function<void(LoggerFaults&)> Set;
    std::string Typed, Answer;
  } cases[] = {
      {"lost echo", [](LoggerFaults& f) { f.LoseEcho = once(2); }, "show\r", "shw\r?\r>"},
      {"altered echo", [](LoggerFaults& f) { f.AlterEcho = once(1); }, "show\r", "siow\r?\r>"},
      {"late echo", [](LoggerFaults& f) { f.DelayEcho = once(1); }, "ab", "a"},
      {"lost carriage return", [](LoggerFaults& f) { f.LoseEcho = once(0); }, "\r", ">"},
      {"line checksum", [](LoggerFaults& f) { f.BadLineChecksum = once(); }, "show clock mode\r",
       "show clock mode\r12#21B4\r>"},
      {"zero checksum", [](LoggerFaults& f) { f.ZeroLineChecksum = once(); }, "show clock mode\r",
       "show clock mode\r12#0000\r>"},
      {"garbled clock", [](LoggerFaults& f) { f.GarbledClock = once(); }, "show clock time\r",
       "show clock time\r" + valueLine("--:--:--")},
      {"ignored command", [](LoggerFaults& f) { f.IgnoreCommand = once(); }, "show ver\r", "show ver"},
      {"refused clock", [](LoggerFaults& f) { f.RefuseClock = always(); }, "clock time 5\rshow clock time\r",
       "clock time 5\r>show clock time\r" + valueLine(clock)},
      {"silent", [](LoggerFaults& f) { f.Silent = true; }, "\r", ""},
  };
  ASSERT_EQ(wireCrc("12") ^ 0x0101U, 0x21B4U);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Wire wire;
    c.Set(wire.Lab.Logger->Faults);
    EXPECT_EQ(wire.exchange(c.Typed), c.Answer);
    const std::string late = wire.exchange("", 1500);
    EXPECT_EQ(late, c.Name == std::string{"late echo"} ? "b" : "");
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
