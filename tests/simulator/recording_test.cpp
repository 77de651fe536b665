#include <algorithm>

#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

/// One pass over a recording of activity, knowing no more than its record lengths.
struct Walk {
  std::vector<std::pair<unsigned, std::int64_t>> Events;
  std::vector<std::pair<std::size_t, unsigned>> Status;  ///< behind so many epochs
  std::size_t Epochs = 0;

  explicit Walk(const std::vector<std::uint8_t>& bytes) {
    for (std::size_t at = 0, size = 0; at < bytes.size(); at += size) {
      const bool event = bytes[at] == 253;
      const std::size_t status = bytes[at] == 254 ? 2 : 0;
      size = event ? 7 : status + 1;
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
      }
    }
  }
  std::vector<unsigned> bits() const {
    std::vector<unsigned> all;
    for (const auto& [bits, value] : Events) all.push_back(bits);
    return all;
  }
};

TEST(Recording, TellsOfDocksWristMarkersBatteryAndResets) {
  for (const bool modern : {false, true}) {
    BenchOptions options = vividBenchOptions();
    options.Logger.Firmware = modern ? "01.01.0007" : "00.01.0028";
    const Bench bench = makeBench(options);
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
    const Walk walk{bench.Logger->recordedBytes()};
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
