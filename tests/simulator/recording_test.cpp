#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "simulator/calendar.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

/// One pass over a recording, knowing no more than its record lengths.
struct Walk {
  struct Event {
    unsigned Bits;
    std::int64_t Value;
    std::size_t Epoch;  ///< epochs written before it
  };
  std::vector<Event> Events;
  std::vector<std::pair<std::size_t, unsigned>> Status;
  std::vector<std::vector<std::uint8_t>> Epochs;
  std::string Complaint;

  Walk(const std::vector<std::uint8_t>& bytes, std::size_t length) { Complaint = read(bytes, length); }

  std::string read(const std::vector<std::uint8_t>& bytes, std::size_t length) {
    for (std::size_t at = 0; at < bytes.size();) {
      if (bytes[at] == 253) {
        if (at + 7 > bytes.size()) return "half an event";
        std::int64_t value = 0;
        for (std::size_t i = 7; i-- > 3;) value = value * 256 + bytes[at + i];
        Events.push_back({bytes[at + 1], value, Epochs.size()});
        at += 7;
        continue;
      }
      if (Events.empty()) return "an epoch before any event";
      if (bytes[at] == 254) {
        Status.emplace_back(Epochs.size(), bytes[at + 1]);
        at += 2;
        if (at < bytes.size() && bytes[at] >= 253) return "no epoch behind a status record";
      }
      if (at + length > bytes.size()) return "half an epoch";
      Epochs.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                          bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
      at += length;
    }
    return {};
  }
  std::vector<unsigned> bits() const {
    std::vector<unsigned> all;
    for (const Event& event : Events) all.push_back(event.Bits);
    return all;
  }
};

Bench benchOf(LoggerModel model, const std::string& firmware, std::uint8_t units = 2) {
  BenchOptions options = model == LoggerModel::Vivid ? vividBenchOptions() : kestrin2BenchOptions();
  options.Logger.Firmware = firmware;
  options.Logger.MemoryUnits = units;
  return makeBench(options);
}

TEST(Recording, EveryModeIsAWellFormedStream) {
  const struct {
    LoggerModel Model;
    Mode What;
    std::size_t Length;
  } cases[] = {{LoggerModel::Vivid, Mode::Activity, 1},
               {LoggerModel::Vivid, Mode::StandardLight, 4},
               {LoggerModel::Vivid, Mode::ActivityAndStandardLight, 5},
               {LoggerModel::Vivid, Mode::SpecialLight, 2},
               {LoggerModel::Vivid, Mode::ActivityAndSpecialLight, 3},
               {LoggerModel::Vivid, Mode::OffWristFrequency, 2},
               {LoggerModel::Vivid, Mode::LightCalibration, 4},
               {LoggerModel::Vivid, Mode::Activity32Hz, 1},
               {LoggerModel::Kestrin2, Mode::Activity, 1},
               {LoggerModel::Kestrin2, Mode::StandardLight, 2},
               {LoggerModel::Kestrin2, Mode::ActivityAndStandardLight, 3},
               {LoggerModel::Kestrin2, Mode::LightCalibration, 2},
               {LoggerModel::Kestrin2, Mode::Activity32Hz, 1}};
  for (const auto& c : cases)
    for (const char* firmware : c.What == Mode::Activity
                                    ? std::vector{"00.01.0028", "00.01.0029", "00.02.0001", "01.00.0003"}
                                    : std::vector{"00.01.0030", "01.01.0007"}) {
      SCOPED_TRACE(testing::Message() << int(c.Model) << " mode " << int(c.What) << " firmware " << firmware);
      const Bench bench = benchOf(c.Model, firmware);
      const RecordingSetup setup = ordinarySetup(*bench.World, c.What, 60);
      bench.Logger->setUp(setup);
      bench.Logger->wear(48h);
      const Walk walk{bench.Logger->recordedBytes(), c.Length};
      EXPECT_EQ(walk.Complaint, "");
      ASSERT_GE(walk.Events.size(), 2U);
      EXPECT_EQ(walk.Events.front().Value, setup.StartTime);
      EXPECT_EQ(walk.Epochs.size(), 48U * 60 - 1);
      EXPECT_EQ(bench.Logger->block().number(block::DataAvailable), 85U);
      const bool modern = bench.Logger->firmware().hasNewEvents();
      EXPECT_EQ(walk.bits(), modern ? (std::vector<unsigned>{1, 96}) : (std::vector<unsigned>{1 + 64, 32}));
      const bool lightFirst =
          c.What == Mode::StandardLight || c.What == Mode::SpecialLight || c.What == Mode::LightCalibration;
      const unsigned limit = lightFirst ? (c.Length == 4 ? 63 : 31) : 252;
      unsigned highest = 0;
      for (const auto& epoch : walk.Epochs) highest = std::max<unsigned>(highest, epoch[0]);
      EXPECT_LE(highest, limit);
      EXPECT_GT(highest, 0U);
    }
}

TEST(Recording, CodesAreTheNearestOnTheirScales) {
  std::int32_t step = 0;
  for (unsigned code = 0; code <= 252; ++code) {
    if (step < 32767) {
      EXPECT_EQ(activityCode(step, 128), code);
      EXPECT_EQ(activityCode(step * 2.0, 64), code);
    }
    step = std::min(step + 1 + step / 32, 32767);
  }
  EXPECT_EQ(activityCode(1e9, 128), 243) << "the scale ends there";
  const std::pair<double, unsigned> lux[] = {
      {0, 0}, {1 / 128.0, 0}, {1 / 64.0, 32}, {1.0, 224}, {100000, 756}};
  for (const auto& [value, code] : lux) EXPECT_EQ(lightCode(value), code);
  EXPECT_EQ(colourCode(1.0, false), std::lround(32 * (30 - std::log2(1e6))));
  EXPECT_EQ(colourCode(1.0, true), colourCode(1.0, false) + 32 * 6);
  EXPECT_EQ(colourCode(1e12, true), 1023);
}

TEST(Recording, KeepsToItsTimes) {
  const struct {
    const char* Name;
    std::int64_t Start, Stop;  ///< seconds from now
    std::vector<std::pair<unsigned, std::int64_t>> Events;
    std::size_t Epochs;
  } cases[] = {{"start to stop", 600, 1200, {{1, 600}, {2, 1201}}, 20},
               {"stop inside an epoch", 600, 1210, {{1, 600}, {2, 1211}}, 20},
               {"already begun", -100, 300, {{1, 0}, {2, 301}}, 10},
               {"already over", -100, -10, {}, 0},
               {"stops before it starts", 600, 500, {}, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    BenchOptions options = vividBenchOptions();
    options.LoggerInDock = false;
    const Bench bench = makeBench(options);
    const std::int64_t now = bench.World->now();
    RecordingSetup setup = ordinarySetup(*bench.World, Mode::Activity, 30);
    setup.StartTime = now + c.Start;
    setup.StopTime = now + c.Stop;
    bench.Logger->setUp(setup);
    bench.Logger->wear(2h);
    const Walk walk{bench.Logger->recordedBytes(), 1};
    EXPECT_EQ(walk.Complaint, "");
    ASSERT_EQ(walk.Events.size(), c.Events.size());
    for (std::size_t i = 0; i < c.Events.size(); ++i) {
      EXPECT_EQ(walk.Events[i].Bits, c.Events[i].first);
      EXPECT_EQ(walk.Events[i].Value - now, c.Events[i].second);
    }
    EXPECT_EQ(walk.Epochs.size(), c.Epochs);
    EXPECT_FALSE(bench.Logger->recording());
  }
}

TEST(Recording, FillsItsMemoryAndSaysSo) {
  for (const char* firmware : {"00.01.0030", "00.02.0001", "01.01.0007"})
    for (const auto& [mode, length] :
         {std::pair{Mode::ActivityAndStandardLight, 5U}, std::pair{Mode::Activity, 1U}}) {
      SCOPED_TRACE(testing::Message() << firmware << " " << length);
      const Bench bench = benchOf(LoggerModel::Vivid, firmware, 1);
      bench.Logger->setUp(ordinarySetup(*bench.World, mode, 15));
      bench.Logger->wear(24h * 14);
      const Walk walk{bench.Logger->recordedBytes(), length};
      EXPECT_EQ(walk.Complaint, "");
      EXPECT_EQ(walk.bits().back(), 4U);
      const std::uint32_t used = bench.Logger->block().number(block::NextAddress);
      EXPECT_LE(used, 65536U);
      EXPECT_GE(used + 20, 65536U);
      EXPECT_EQ(bench.Logger->block().number(block::MemoryFull),
                bench.Logger->firmware().hasMemoryFullFlag() ? 85U : 0U);
      EXPECT_FALSE(bench.Logger->recording());
    }
}

TEST(Recording, TellsOfDocksWristMarkersBatteryAndResets) {
  for (const bool modern : {false, true}) {
    SCOPED_TRACE(modern);
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
    EXPECT_EQ(walk.Complaint, "");
    EXPECT_EQ(walk.bits(), modern ? (std::vector<unsigned>{1, 96, 32, 8, 1, 2})
                                  : (std::vector<unsigned>{65, 32, 64, 8, 1, 2}));
    ASSERT_EQ(walk.Events.size(), 6U);
    EXPECT_EQ(walk.Events[1].Epoch, 20U * 60 - 1);
    EXPECT_EQ(walk.Events[3].Value, 0x01020304);
    EXPECT_EQ(bench.Logger->block().number(block::Counters), 0x11U);
    EXPECT_EQ(bench.Logger->block().number(block::LowPowerShutdown), 85U);
    const unsigned marker2 = modern ? 16 : 32, wentOff = modern ? 12 : 20, changes = modern ? 4 : 12;
    std::size_t marks = 0, marks2 = 0, off = 0, low = 0;
    std::optional<std::size_t> firstLow;
    for (const auto& [epoch, bits] : walk.Status) {
      marks += bits & 1U;
      marks2 += (bits & marker2) != 0 ? 1U : 0U;
      off += (bits & changes) != 0 && (bits & wentOff) == wentOff ? 1U : 0U;
      if ((bits & 2U) == 0) continue;
      ++low;
      if (!firstLow) firstLow = epoch;
    }
    EXPECT_GT(marks, 20U);
    EXPECT_GT(marks2, 8U);
    EXPECT_GE(off, 3U);
    const auto inDock =
        std::ranges::find(walk.Status, 20U * 60 - 1, [](const auto& status) { return status.first; });
    ASSERT_NE(inDock, walk.Status.end());
    EXPECT_EQ(inDock->second & wentOff, wentOff);
    EXPECT_EQ(firstLow, 30U * 60 - 1);
    EXPECT_GE(low, 1U);
  }
}

TEST(Recording, StopsByCommandAndKeepsWhatItHas) {
  Wire wire;
  RecordingSetup setup = ordinarySetup(*wire.Lab.World, Mode::ActivityAndSpecialLight, 30);
  wire.Lab.Logger->setUp(setup);
  wire.Lab.Logger->wear(8h);
  EXPECT_TRUE(wire.Lab.Logger->recording());
  wire.connect();
  EXPECT_EQ(wire.exchange("acq stop 0\r"), "acq stop 0\r>");
  EXPECT_FALSE(wire.Lab.Logger->recording());
  EXPECT_EQ(wire.Lab.Logger->block().signedNumber(block::StopTime), 0x7FFFFFFF);
  const auto recorded = wire.Lab.Logger->recordedBytes();
  const Walk walk{recorded, 3};
  EXPECT_EQ(walk.Events.back().Bits, 66U);
  EXPECT_LE(walk.Events.front().Value + static_cast<std::int64_t>(walk.Epochs.size()) * 30,
            walk.Events.back().Value);
  wire.Lab.World->advance(24h);
  EXPECT_EQ(wire.Lab.Logger->recordedBytes(), recorded) << "it stays stopped until it is set up again";
  EXPECT_EQ(wire.download("show data").substr(0, recorded.size()),
            std::string(recorded.begin(), recorded.end()));
}

TEST(Recording, TheSameSeedGivesTheSameDays) {
  const auto record = [](std::uint32_t seed) {
    const Bench bench = benchOf(LoggerModel::Kestrin2, "01.00.0012");
    bench.Logger->setUp(ordinarySetup(*bench.World, Mode::ActivityAndStandardLight, 30));
    WearOptions days;
    days.Seed = seed;
    bench.Logger->wear(24h, days);
    return bench.Logger->recordedBytes();
  };
  EXPECT_TRUE(record(5) == record(5));
  EXPECT_FALSE(record(5) == record(6));
}

TEST(Setup, IsReadBackAsItWasStored) {
  const Bench bench = makeVividBench();
  RecordingSetup setup = ordinarySetup(*bench.World, Mode::ActivityAndSpecialLight, 300);
  setup.ZoneBias = -345;
  setup.DateFormat = 1;
  setup.Subject.Gender = '\\';
  store(setup, bench.Logger->block());
  const RecordingSetup read = readSetup(bench.Logger->block());
  EXPECT_EQ(read.Subject, setup.Subject);
  EXPECT_EQ(read.ZoneBias, -345);
  EXPECT_EQ(read.ZoneDaylightBias, -60);
  EXPECT_EQ(read.StartTime, setup.StartTime);
  EXPECT_EQ(read.DaylightStart, secondsOf(2026, 3, 8, 7));
  EXPECT_EQ(read.DaylightEnd, secondsOf(2026, 11, 1, 6));
  EXPECT_EQ(read.RecordingMode, setup.RecordingMode);
  EXPECT_EQ(read.DateFormat, 1);
}

}  // namespace
}  // namespace hy_wristlog::simulator
