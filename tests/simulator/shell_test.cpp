#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

BenchOptions vividWith(const std::string& firmware) {
  BenchOptions options = vividBenchOptions();
  options.Logger.Firmware = firmware;
  return options;
}

TEST(Shell, AnswersToTheByte) {
  const BenchOptions vivid = vividBenchOptions();
  const std::string version = valueLine("01.01.0007 01.02"), battery = "show battery\r",
                    mode = "show clock mode\r", clock = "show clock time\r", set = "clock time 5\r";
  const auto sound = [](LoggerFaults&) {};
  const std::tuple<BenchOptions, void (*)(LoggerFaults&), std::string, std::string> cases[] = {
      {vivid, sound, "show ver\r", "show ver\r" + version},
      {vivid, sound, battery, battery + valueLine("3.050 02032026 3.016")},
      {vividWith("00.02.0001"), sound, battery, battery + valueLine("3.050 02032026")},
      {vivid, sound, "acq stop 12x\r", "acq stop 12x\r?\r>"},
      {vividWith("00.01.0029"), sound, "sleep 0\r", "sleep 0\r?\r>"},
      {vivid, sound, "sh\n\x18\x18\t\x7F\xE9ow ver\r", "show ver\r" + version},
      {vivid, [](auto& f) { f.LoseEcho = once(2); }, "show\r", "shw\r?\r>"},
      {vivid, [](auto& f) { f.DelayEcho = once(1); }, "ab", "a"},
      {vivid, [](auto& f) { f.BadLineChecksum = once(); }, mode, mode + "12#21B4\r>"},
      {vivid, [](auto& f) { f.GarbledClock = once(); }, clock, clock + valueLine("--:--:--")},
      {vivid, [](auto& f) { f.RefuseClock = always(); }, set + clock,
       set + ">" + clock + valueLine("1772460000")},
      {vivid, [](auto& f) { f.IgnoreCommand = once(); }, "show ver\r", "show ver"},
  };
  for (const auto& [options, spoil, typed, answer] : cases) {
    Wire wire{options};
    spoil(wire.Lab.Logger->Faults);
    EXPECT_EQ(wire.exchange(typed), answer);
    EXPECT_EQ(wire.exchange("", 1500), answer == "a" ? "b" : "") << "a late echo still comes";
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
