#include <algorithm>

#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

/// One pass over a recording, knowing no more than its record lengths.
struct Walk {
  std::vector<std::pair<unsigned, std::int64_t>> Events;
  std::vector<std::pair<std::size_t, unsigned>> Status;  ///< behind so many epochs
  std::size_t Epochs = 0;
  std::uint8_t Highest = 0;

  Walk(const std::vector<std::uint8_t>& bytes, std::size_t length) {
    for (std::size_t at = 0, size = 0; at < bytes.size(); at += size) {
      const bool event = bytes[at] == 253;
      const std::size_t status = bytes[at] == 254 ? 2 : 0;
      size = event ? 7 : status + length;
      if (at + size > bytes.size() || (Events.empty() && !event) || (status > 0 && bytes[at + 2] >= 253)) {
        ADD_FAILURE() << "broken at " << at;
        return;
      }
      if (status > 0) Status.emplace_back(Epochs, bytes[at + 1]);
      if (event) {
        std::int64_t value = 0;
        for (std::size_t i = 7; i-- > 3;) value = value * 256 + bytes[at + i];
        Events.emplace_back(bytes[at + 1], value);
      } else {
        ++Epochs;
        Highest = std::max(Highest, bytes[at + status]);
      }
    }
  }
  std::vector<unsigned> bits() const {
    std::vector<unsigned> all;
    for (const auto& [bits, value] : Events) all.push_back(bits);
    return all;
  }
};

Bench benchOf(LoggerModel model, const std::string& firmware) {
  BenchOptions options = model == LoggerModel::Vivid ? vividBenchOptions() : kestrin2BenchOptions();
  options.Logger.Firmware = firmware;
  options.Logger.MemoryUnits = 1;
  return makeBench(options);
}

TEST(Recording, EveryModeIsAWellFormedStreamUntilTheMemoryIsFull) {
  constexpr auto Vivid = LoggerModel::Vivid, Kestrin2 = LoggerModel::Kestrin2;
  const std::tuple<LoggerModel, Mode, std::size_t, int> cases[] = {
      {Vivid, Mode::Activity, 1, 252},
      {Vivid, Mode::StandardLight, 4, 63},
      {Vivid, Mode::ActivityAndStandardLight, 5, 252},
      {Vivid, Mode::SpecialLight, 2, 31},
      {Vivid, Mode::ActivityAndSpecialLight, 3, 252},
      {Vivid, Mode::OffWristFrequency, 2, 252},
      {Vivid, Mode::LightCalibration, 4, 63},
      {Vivid, Mode::Activity32Hz, 1, 252},
      {Kestrin2, Mode::Activity, 1, 252},
      {Kestrin2, Mode::StandardLight, 2, 31},
      {Kestrin2, Mode::ActivityAndStandardLight, 3, 252},
      {Kestrin2, Mode::LightCalibration, 2, 31},
      {Kestrin2, Mode::Activity32Hz, 1, 252}};
  for (const auto& [model, mode, length, firstLimit] : cases)
    for (const char* firmware : {"00.01.0028", "00.01.0030", "00.02.0001", "01.01.0007"}) {
      SCOPED_TRACE(testing::Message() << int(model) << " mode " << int(mode) << " firmware " << firmware);
      const Bench bench = benchOf(model, firmware);
      SimulatedLogger& logger = *bench.Logger;
      const RecordingSetup setup = ordinarySetup(*bench.World, mode, 30);
      logger.setUp(setup);
      logger.wear(48h);
      const Walk days{logger.recordedBytes(), length};
      const bool modern = logger.firmware().hasNewEvents();
      EXPECT_EQ(days.bits(), modern ? (std::vector<unsigned>{1, 96}) : (std::vector<unsigned>{1 + 64, 32}));
      EXPECT_EQ(days.Events[0].second, setup.StartTime);
      EXPECT_EQ(days.Epochs, 48U * 120 - 2);
      EXPECT_LE(days.Highest, firstLimit);
      EXPECT_GT(days.Highest, 0U);
      EXPECT_EQ(logger.block().number(block::DataAvailable), 85U);
      if (length < 4) continue;
      logger.wear(24h * 4);
      EXPECT_EQ(Walk(logger.recordedBytes(), length).bits().back(), 4U);
      EXPECT_NEAR(logger.block().number(block::NextAddress), 65526, 10);
      EXPECT_EQ(logger.block().number(block::MemoryFull), logger.firmware().hasMemoryFullFlag() ? 85U : 0U);
    }
}

TEST(Recording, TellsOfDocksWristMarkersBatteryAndResets) {
  for (const bool modern : {false, true}) {
    const Bench bench = benchOf(LoggerModel::Vivid, modern ? "01.01.0007" : "00.01.0028");
    RecordingSetup setup = ordinarySetup(*bench.World, Mode::Activity, 60);
    setup.Button2 = 2;
    bench.Logger->setUp(setup);
    WearOptions days;
    days.MarkersPerDay = 20;
    days.Happenings = {{20h + 30s, Happening::Kind::IntoDock},
                       {21h, Happening::Kind::OutOfDock},
                       {30h + 30s, Happening::Kind::BatteryLow},
                       {40h, Happening::Kind::PowerReset, 0x01020304},
                       {60h, Happening::Kind::BatteryEmpty}};
    bench.Logger->wear(72h, days);
    const Walk walk{bench.Logger->recordedBytes(), 1};
    EXPECT_EQ(walk.bits(), modern ? (std::vector<unsigned>{1, 96, 32, 8, 1, 2})
                                  : (std::vector<unsigned>{65, 32, 64, 8, 1, 2}));
    EXPECT_EQ(walk.Events.at(3).second, 0x01020304);
    EXPECT_EQ(bench.Logger->block().number(block::Counters), 0x11U);
    EXPECT_EQ(bench.Logger->block().number(block::LowPowerShutdown), 85U);
    const unsigned wentOff = modern ? 12 : 20;
    const auto with = [&](unsigned bits, std::size_t from = 0, std::size_t to = 9999) {
      return std::ranges::count_if(walk.Status, [&](const auto& status) {
        return status.first >= from && status.first <= to && (status.second & bits) == bits;
      });
    };
    EXPECT_GT(with(1), 20);
    EXPECT_GT(with(modern ? 16 : 32), 8);
    EXPECT_GE(with(wentOff), 3);
    EXPECT_EQ(with(wentOff, 20 * 60 - 1, 20 * 60 - 1), 1);
    EXPECT_EQ(with(2, 0, 30 * 60 - 1), 1);
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
