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
struct Reader : FarEnd<PendrelBench> {
  explicit Reader(const PendrelBenchOptions& options) : FarEnd(makePendrelBench(options)) { speed(600); }
  void speed(int baud) {
    Port->configure({baud, platform::LineParity::None, 8, platform::LineStopBits::One});
  }
  /// Types at the pace of the line, waits, and returns what has come by then.
  std::string exchange(const std::string& text, int milliseconds = 3000) {
    return FarEnd::exchange(text, milliseconds + 17 * static_cast<int>(text.size()));
  }
  SimulatedPendrel& logger() const { return *Lab.Logger; }
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
                    delay = "***A04***W0043030A";
  const std::tuple<PendrelModel, std::size_t, std::string, std::string> cases[] = {
      {Plain, 8, "***C", setupText(fresh, "C8B 80 1234 1F 00", false)},
      {Checksums, 32, "***C", setupText(fresh, "C94 80 1234 7F 00", true)},
      {Steps, 64, "***B" + subject + "***A81***D311209***E2359***L290200***P006D47***C",
       "***B" + subject + "***A81***D311209***E2359***L290200\r>***P006D47\r>" +
           setupText(subject + "\r81\r00\rFF80\r31 12 09 23 59\r29 02 00\r", "B21 80 1234 FF 00", true)},
      {Checksums, 64, read, read + "FF\r" + hexOf(sumOf("006DFF")) + "\r>"},
      {Steps, 8, "***P1FFF0A***P20000B***O1FFF***O2000",
       "***P1FFF0A\r>***P20000B\r>***O1FFF0A\r" + hexOf(sumOf("1FFF0A")) + "\r>***O2000FF\r" +
           hexOf(sumOf("2000FF")) + "\r>"},
      {Checksums, 64, delay, delay + "\r0043030A" + hexOf(sumOf("0043030A")) + "\r>"},
      {Plain, 64, "***A04***H0043***F030A", "***A04***H0043\r***F030A\r"},
  };
  for (const auto& [model, kilobytes, typed, answer] : cases) {
    Reader reader{optionsOf(model, kilobytes)};
    EXPECT_EQ(reader.exchange(typed), answer) << int(model) << ' ' << typed;
  }
}

TEST(Pendrel, StreamsItsBlocks) {
  const std::tuple<PendrelModel, void (*)(PendrelFaults&), std::size_t> cases[] = {
      {Plain, [](auto&) {}, 4096},
      {Checksums, [](auto&) {}, 4098},
      {Steps, [](auto&) {}, 4098},
      {Plain, [](auto& f) { f.LongBlock = once(); }, 4103}};
  for (const auto& [model, spoil, length] : cases) {
    Reader reader{optionsOf(model, 8)};
    for (std::size_t at = 0; at < 8192; ++at)
      reader.logger().memory().write(at, static_cast<std::uint8_t>(at * 7 + at / 256));
    const std::string data = textOf(reader.logger().memory().block(1));
    spoil(reader.logger().Faults);
    reader.speed(600);
    EXPECT_EQ(reader.exchange("***N10", 900), "***N10");
    EXPECT_EQ(reader.exchange("", 80), "") << "the PC has a second to change its speed";
    reader.speed(4800);
    const std::string block = reader.exchange("", 9000);
    EXPECT_EQ(block.size(), length);
    EXPECT_EQ(block.substr(0, 4096), data);
    const unsigned sum = sumOf(data);
    if (length == 4098) {
      EXPECT_EQ(block.substr(4096), (std::string{static_cast<char>(sum >> 8), static_cast<char>(sum)}));
    }
    reader.speed(600);
    EXPECT_EQ(reader.exchange("\r"), "\r>") << "and it speaks slowly again";
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
