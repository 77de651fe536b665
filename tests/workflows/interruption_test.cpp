#include <gtest/gtest.h>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// A short recording in its dock, ended, so that its bytes do not change any more.
std::unique_ptr<Workbench> shortRecording(enmLoggerPointer model, std::chrono::minutes worn = 5min) {
  auto desk = recorded(model, worn);
  desk->stored().set(block::StopTime, desk->bench.World->now());
  desk->wait(31s);
  desk->bench.line().resetTraffic();
  return desk;
}

struct Undisturbed {
  Bytes Memory;
  ActivitySeries Activity;
  std::int32_t Samples = 0;
  std::uint64_t BytesToPc = 0, BytesToLogger = 0;

  explicit Undisturbed(enmLoggerPointer model, std::chrono::minutes worn = 5min) {
    const auto desk = shortRecording(model, worn);
    Memory = desk->logger().recordedBytes();
    EXPECT_EQ(desk->retrieve(), 0);
    Activity = desk->data->Get_ActivityArray();
    Samples = desk->data->Get_Samples();
    BytesToPc = desk->bench.line().traffic().BytesToPc;
    BytesToLogger = desk->bench.line().traffic().BytesToLogger;
    EXPECT_GT(Samples, 5);
  }
  std::uint64_t traffic() const { return BytesToPc + BytesToLogger; }
  bool is(const Class_VardenLogger& data) const {
    return data.Get_Samples() == Samples && data.Get_ActivityArray() == Activity;
  }
};

/// What a disturbed retrieval must leave, and that the next one on a mended line brings everything.
void expectNothingLost(Workbench& desk, const Undisturbed& good) {
  EXPECT_TRUE(desk.portClosed());
  ASSERT_EQ(desk.logger().recordedBytes(), good.Memory);
  desk.bench.line().Faults = {};
  desk.bench.line().reconnect();
  desk.wait(60s);
  ASSERT_EQ(desk.retrieve(), 0);
  ASSERT_TRUE(good.is(*desk.data));
}

/// Leaves a failure behind whose echo the next command takes its first failure for.
void failJustBefore(Workbench& desk) {
  desk.logger().Faults.BadConfigChecksum = simulator::always();
  desk.status();
  EXPECT_EQ(desk.simple, "Error: Problem Reading Configuration");
  desk.logger().Faults.BadConfigChecksum = {};
  desk.bench.line().resetTraffic();
}

TEST(Interruption, ARetrievalCutAtAnyByteLosesNothing) {
  const struct {
    enmLoggerPointer Model;
    bool BehindAFailure;
    std::uint64_t Step;
  } series[] = {{LggrPntr_KRVivid, false, 1}, {LggrPntr_KRII, false, 97}, {LggrPntr_KRVivid, true, 41}};
  for (const auto& row : series) {
    const Undisturbed good(row.Model);
    for (std::uint64_t at = 0; at < good.traffic(); at += row.Step * stride()) {
      SCOPED_TRACE("cut after byte " + std::to_string(at) + " of " + std::to_string(good.traffic()));
      const auto desk = shortRecording(row.Model);
      if (row.BehindAFailure) failJustBefore(*desk);
      desk->bench.line().Faults.CutAfterTotal = at;
      if (desk->retrieve() == 0) {
        // All data had come; what was lost is the last command's answer.
        EXPECT_TRUE(good.is(*desk->data));
        EXPECT_GT(at + 30, good.traffic());
      }
      ASSERT_NO_FATAL_FAILURE(expectNothingLost(*desk, good));
    }
  }
}

/// The link stores a packet that comes again a second time: a logger that did not hear the acknowledgement
/// leaves one packet too many.
bool hasDoubledPacket(const Workbench& desk, const Undisturbed& good) {
  return desk.host->Downloaded >= static_cast<std::int32_t>(good.Memory.size()) + 128;
}

TEST(Interruption, ADamagedByteIsNeverWrongData) {
  constexpr auto TwoPackets = 90min;
  const struct {
    enmLoggerPointer Model;
    bool BehindAFailure;
    std::uint64_t StepToPc, StepToLogger;
  } series[] = {
      {LggrPntr_KRVivid, false, 11, 1}, {LggrPntr_KRII, false, 97, 7}, {LggrPntr_KRVivid, true, 41, 5}};
  for (const auto& row : series) {
    const Undisturbed good(row.Model, TwoPackets);
    std::int32_t doubled = 0;
    for (const bool toPc : {true, false}) {
      const std::uint64_t bytes = toPc ? good.BytesToPc : good.BytesToLogger;
      for (std::uint64_t at = 0; at < bytes; at += (toPc ? row.StepToPc : row.StepToLogger) * stride()) {
        SCOPED_TRACE("byte " + std::to_string(at) + (toPc ? " to the PC" : " to the logger"));
        const auto desk = shortRecording(row.Model, TwoPackets);
        if (row.BehindAFailure) failJustBefore(*desk);
        auto& faults = desk->bench.line().Faults;
        faults.AlterMask = static_cast<std::uint8_t>(1U << at % 8);
        (toPc ? faults.AlterToPc : faults.AlterToLogger) = simulator::once(static_cast<std::int32_t>(at));
        const std::int32_t code = desk->retrieve();
        if (code == 0 || code == 10030) {
          const bool twice = hasDoubledPacket(*desk, good);
          doubled += twice;
          EXPECT_TRUE(twice || good.is(*desk->data)) << code;
        }
        ASSERT_NO_FATAL_FAILURE(expectNothingLost(*desk, good));
      }
    }
    EXPECT_LE(doubled, 2);
  }
}

/// Such a recording can decode without complaint; only the count of its bytes tells.
TEST(Interruption, ADoubledPacketShowsInTheBytesDownloaded) {
  const Undisturbed good(LggrPntr_KRVivid, 6h);
  const auto packets = static_cast<std::int32_t>((good.Memory.size() + 127) / 128);
  for (std::int32_t packet = 0; packet <= packets; ++packet) {
    const auto desk = shortRecording(LggrPntr_KRVivid, 6h);
    constexpr std::int32_t ConfigPackets = 4;
    desk->logger().Faults.Transfer.DoublePacket = simulator::once(ConfigPackets + packet);
    desk->retrieve();
    EXPECT_EQ(hasDoubledPacket(*desk, good), packet < packets);
    EXPECT_TRUE(packet + 1 < packets || good.is(*desk->data));
    ASSERT_NO_FATAL_FAILURE(expectNothingLost(*desk, good));
  }
}

TEST(Interruption, ARetrievalAbortedAtAnyRound) {
  for (const enmLoggerPointer model : Models) {
    const Undisturbed good(model);
    const auto trial = shortRecording(model);
    trial->retrieve();
    const std::int32_t rounds = trial->host->Rounds;
    const auto step = static_cast<std::int32_t>(53 * stride());
    for (std::int32_t round = 1; round <= rounds; round += step) {
      SCOPED_TRACE("round " + std::to_string(round) + " of " + std::to_string(rounds));
      const auto desk = shortRecording(model);
      desk->host->AbortIn = round;
      const std::int32_t code = desk->retrieve();
      desk->host->AbortIn = -1;
      EXPECT_TRUE(code == 10013 || round + 60 > rounds) << code;
      ASSERT_NO_FATAL_FAILURE(expectNothingLost(*desk, good));
    }
  }
}

TEST(Interruption, AConfigurationAbortedAtAnyRound) {
  for (const enmLoggerPointer model : Models) {
    Workbench trial(model);
    ASSERT_EQ(trial.configure(), 0);
    const std::int32_t rounds = trial.host->Rounds;
    const auto step = static_cast<std::int32_t>(53 * stride());
    for (std::int32_t round = 1; round <= rounds; round += step) {
      SCOPED_TRACE("round " + std::to_string(round) + " of " + std::to_string(rounds));
      Workbench desk(model);
      desk.host->AbortIn = round;
      const std::int32_t code = desk.configure();
      desk.host->AbortIn = -1;
      // An abort has no code of its own here; one that breaks off a transfer shows as its failure.
      EXPECT_TRUE(code == 0 || code == 3001 || code == 3002 || code == 3013) << code;
      EXPECT_TRUE(desk.serialNumber.empty() || round + 60 > rounds);
      EXPECT_TRUE(desk.portClosed());
      desk.wait(20s);
      ASSERT_EQ(desk.configure(), 0);
    }
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
