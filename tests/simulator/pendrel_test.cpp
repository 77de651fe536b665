#include <algorithm>
#include <map>

#include "simulator/pendrel_subject.h"
#include "simulator/wearer.h"
#include "support/failures.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

constexpr auto Plain = PendrelModel::Plain, Checksums = PendrelModel::Checksums, Steps = PendrelModel::Steps;

PendrelBenchOptions optionsOf(PendrelModel model, std::size_t kilobytes = 64) {
  PendrelBenchOptions options;
  options.Logger.Model = model;
  options.Logger.MemoryKilobytes = kilobytes;
  return options;
}

/// Somebody at the PC's end of a Pendreader's line.
struct Reader {
  explicit Reader(const PendrelBenchOptions& options) : Lab(makePendrelBench(options)) { connect(); }

  void connect(bool dtr = true, bool rts = true) {
    Port.reset();
    Port = Lab.World->serialPorts().open(1);
    speed(600);
    Port->setDtr(dtr);
    Port->setRts(rts);
  }
  void speed(int baud) {
    Port->configure({baud, platform::LineParity::None, 8, platform::LineStopBits::One});
  }
  /// Types at the pace of the line, waits, and returns what has come by then.
  std::string exchange(const std::string& text, int milliseconds = 3000) {
    Port->write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    Lab.World->advance(std::chrono::milliseconds{milliseconds + 17 * static_cast<int>(text.size())});
    std::string answer(70000, '\0');
    answer.resize(Port->read({reinterpret_cast<std::uint8_t*>(answer.data()), answer.size()}));
    return answer;
  }
  SimulatedPendrel& logger() const { return *Lab.Logger; }

  PendrelBench Lab;
  std::unique_ptr<platform::SerialPort> Port;
};

unsigned sumOf(const std::string& text) {
  unsigned sum = 0;
  for (const char c : text) sum += static_cast<std::uint8_t>(c);
  return sum;
}

std::string hexOf(unsigned value) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "%04X", value & 0xFFFFU);
  return digits;
}

std::string setupText(const std::string& beforeRecord, const std::string& record, bool checksum) {
  const std::string text = "\r" + beforeRecord + record;
  return "***C" + text + "\r" + (checksum ? hexOf(sumOf(text)) + "\r>" : ">");
}

TEST(Pendrel, AnswersToTheByte) {
  const std::string fresh = std::string(64, ' ') + "\r02\r00\rFF80\r00 00 00 00 00\r02 03 26\r",
                    subject = "Subject 17 * " + std::string(51, 'x'), read = "***O006D",
                    delay = "***A04***W0043030A", steps = setupText(fresh, "B21 80 1234 FF 00", true);
  const std::string altered = "?\rS" + fresh.substr(64) + "C9\r";
  const auto sound = [](PendrelFaults&) {};
  const std::tuple<PendrelModel, std::size_t, void (*)(PendrelFaults&), std::string, std::string> cases[] = {
      {Plain, 64, sound, "\r\r", "\r>\r>"},
      {Plain, 8, sound, "***C", setupText(fresh, "C8B 80 1234 1F 00", false)},
      {Checksums, 16, sound, "***C", setupText(fresh, "C94 80 1234 3F 00", true)},
      {Checksums, 32, sound, "***C", setupText(fresh, "C94 80 1234 7F 00", true)},
      {Steps, 64, sound, "***C", steps},
      {Steps, 64, sound, "***B" + subject + "***A81***D311209***E2359***L290200***P006D47***C",
       "***B" + subject + "***A81***D311209***E2359***L290200\r>***P006D47\r>" +
           setupText(subject + "\r81\r00\rFF80\r31 12 09 23 59\r29 02 00\r", "B21 80 1234 FF 00", true)},
      {Plain, 64, sound, "***Bshort\r***C",
       "***Bshort\r" + setupText("short" + fresh.substr(64), "C8B 80 1234 FF 00", false)},
      {Plain, 64, sound, read, read + "FF\r>"},
      {Checksums, 64, sound, read, read + "FF\r" + hexOf(sumOf("006DFF")) + "\r>"},
      {Steps, 8, sound, "***P1FFF0A***P20000B***O1FFF***O2000",
       "***P1FFF0A\r>***P20000B\r>***O1FFF0A\r" + hexOf(sumOf("1FFF0A")) + "\r>***O2000FF\r" +
           hexOf(sumOf("2000FF")) + "\r>"},
      {Checksums, 64, sound, delay, delay + "\r0043030A" + hexOf(sumOf("0043030A")) + "\r>"},
      {Plain, 64, sound, "***A04***H0043***F030A", "***A04***H0043\r***F030A\r"},
      {Plain, 64, sound, "***GU\r", "***GU"},
      {Plain, 64, [](auto& f) { f.LoseEcho = once(3); }, read, "***006DFF\r>"},
      {Plain, 64, [](auto& f) { f.AlterEcho = once(4); }, read, "***O106DFF\r>"},
      {Plain, 64, [](auto& f) { f.DelayEcho = once(), f.EchoDelay = 4s; }, "*", ""},
      {Plain, 64, [](auto& f) { f.Silent = true; }, "\r***C", ""},
      {Plain, 64, [](auto& f) { f.Unheeded['O'] = once(1); }, read + "***O0000***O0001",
       read + "FF\r>***O0000***O0001FF\r>"},
      {Plain, 64, [](auto& f) { f.Unheeded['\r'] = once(); }, "\r\r", "\r\r>"},
      {Steps, 64,
       [](auto& f) { f.Feigned['P'] = f.Feigned['L'] = f.Feigned['B'] = f.Feigned['E'] = always(); },
       "***P006D47***L010101***B" + subject + "***E2359***C",
       "***P006D47\r>***L010101\r>***B" + subject + "***E2359" + steps},
      {Steps, 64, [](auto& f) { f.BadChecksum['C'] = once(); }, "***C",
       steps.substr(0, steps.size() - 6) + hexOf(sumOf(steps.substr(4, steps.size() - 11)) ^ 0x101) + "\r>"},
      {Steps, 64, [](auto& f) { f.BadChecksum['O'] = once(); }, read,
       read + "FF\r" + hexOf(sumOf("006DFF") ^ 0x101) + "\r>"},
      {Steps, 64, [](auto& f) { f.BadChecksum['W'] = once(); }, delay,
       delay + "\r0043030A" + hexOf(sumOf("0043030A") ^ 0x101) + "\r>"},
      {Steps, 64, [](auto& f) { f.WrongDelayEcho = once(); }, delay,
       delay + "\r00430300" + hexOf(sumOf("0043030A")) + "\r>"},
      {Checksums, 64,
       [](auto& f) {
         f.SetupLines = {{0, "?"}, {1, "S"}, {7, "C9"}, {9, "no"}};
       },
       "***C", "***C" + altered + hexOf(sumOf(altered) - 13) + "\r>"},
  };
  for (const auto& [model, kilobytes, spoil, typed, answer] : cases) {
    Reader reader{optionsOf(model, kilobytes)};
    spoil(reader.logger().Faults);
    EXPECT_EQ(reader.exchange(typed), answer) << int(model) << ' ' << typed;
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
