#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

BenchOptions vividWith(const std::string& firmware) {
  BenchOptions options = vividBenchOptions();
  options.Logger.Firmware = firmware;
  return options;
}

TEST(Shell, AnswersToTheByte) {
  const BenchOptions vivid = vividBenchOptions(), kestrin2 = kestrin2BenchOptions();
  const std::string version = valueLine("01.01.0007 01.02"), battery = "show battery\r",
                    write = "debug mem w 0x2 0xA7\r", read = "debug mem r 0x2\r", mode = "show clock mode\r",
                    clock = "show clock time\r", set = "clock time 5\r";
  const auto sound = [](LoggerFaults&) {};
  const std::tuple<BenchOptions, void (*)(LoggerFaults&), std::string, std::string> cases[] = {
      {vivid, sound, "\r\r", "\r>\r>"},
      {vivid, sound, "show ver\r", "show ver\r" + version},
      {kestrin2, sound, "show ver\r", "show ver\r" + valueLine("01.00.0012")},
      {vivid, sound, battery, battery + valueLine("3.050 02032026 3.016")},
      {vividWith("00.02.0001"), sound, battery, battery + valueLine("3.050 02032026")},
      {vivid, sound, mode, mode + valueLine("12")},
      {vivid, sound, write + read, write + ">" + read + valueLine("0xA7")},
      {vivid, sound, "shut down\r", "shut down\r?\r>"},
      {vivid, sound, "acq stop 12x\r", "acq stop 12x\r?\r>"},
      {vivid, sound, "clock time 4294967296\r", "clock time 4294967296\r?\r>"},
      {vividWith("00.01.0029"), sound, "sleep 0\r", "sleep 0\r?\r>"},
      {vivid, sound, "sh\n\x18\x18\t\x7F\xE9ow ver\r", "show ver\r" + version},
      {vivid, sound, "show v\x03\r", "show v\r>\r>"},
      {vivid, [](auto& f) { f.LoseEcho = once(2); }, "show\r", "shw\r?\r>"},
      {vivid, [](auto& f) { f.AlterEcho = once(1); }, "show\r", "siow\r?\r>"},
      {vivid, [](auto& f) { f.DelayEcho = once(1); }, "ab", "a"},
      {vivid, [](auto& f) { f.BadLineChecksum = once(); }, mode, mode + "12#21B4\r>"},
      {vivid, [](auto& f) { f.ZeroLineChecksum = once(); }, mode, mode + "12#0000\r>"},
      {vivid, [](auto& f) { f.GarbledClock = once(); }, clock, clock + valueLine("--:--:--")},
      {vivid, [](auto& f) { f.RefuseClock = always(); }, set + clock,
       set + ">" + clock + valueLine("1772460000")},
      {vivid, [](auto& f) { f.IgnoreCommand = once(); }, "show ver\r", "show ver"},
      {vivid, [](auto& f) { f.Silent = true; }, "\r", ""},
  };
  for (const auto& [options, spoil, typed, answer] : cases) {
    Wire wire{options};
    spoil(wire.Lab.Logger->Faults);
    EXPECT_EQ(wire.exchange(typed), answer);
    EXPECT_EQ(wire.exchange("", 1500), answer == "a" ? "b" : "") << "a late echo still comes";
  }
}

TEST(Shell, StoresWhatItIsToldAndRenewsTheChecksum) {
  const std::tuple<std::string, BlockField, std::uint32_t, std::uint32_t> cases[] = {
      {"data avail 1", block::DataAvailable, 0, 85},
      {"data avail 0", block::DataAvailable, 85, 0},
      {"acq dptr 1FA0", block::NextAddress, 7, 0x1FA0},
      {"acq dptr 100001", block::NextAddress, 7, 7},
      {"acq stop 1772460099", block::StopTime, 5, 1772460099},
      {"acq stop 0", block::StopTime, 5, 5},
      {"acq stop -1", block::StopTime, 5, 0xFFFFFFFF},
      {"clock mode 24", block::DisplayFormats, 0x11, 0x12},
      {"clock mode 12", block::DisplayFormats, 0x10, 0x11},
      {"clock mode 13", block::DisplayFormats, 0x11, 0x11}};
  for (const auto& [command, field, before, after] : cases) {
    Wire wire;
    wire.Lab.Logger->block().set(field, before);
    wire.Lab.Logger->block().damageChecksum();
    wire.exchange(command + "\r");
    EXPECT_EQ(wire.Lab.Logger->block().number(field), after) << command;
    EXPECT_EQ(wire.Lab.Logger->block().checksumDamaged(), before == after) << command;
  }
}

TEST(Shell, KeepsItsOwnTime) {
  BenchOptions options = vividBenchOptions();
  options.Logger.ClockDrift = 100;  // 8.64 s a day
  options.Logger.ClockError = -7;
  Wire wire{options};
  const std::string ask = "show clock time\r", now = std::to_string(wire.Lab.World->now() - 7);
  EXPECT_EQ(wire.exchange(ask), ask + valueLine(now));
  wire.exchange("clock time 1000000\r");
  wire.Lab.World->advance(24h);
  EXPECT_EQ(wire.exchange(ask), ask + valueLine(std::to_string(1000000 + 86408)));

  EXPECT_EQ(wire.exchange("show", 390), "show");
  EXPECT_EQ(wire.exchange("\r"), "\r?\r>");
  EXPECT_EQ(wire.exchange("show", 410), "show");
  EXPECT_EQ(wire.exchange("\r"), "\r>") << "a pause forgets the line";
}

}  // namespace
}  // namespace hy_wristlog::simulator
