#include <gtest/gtest.h>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// A short recording in its dock, ended, so that its bytes do not change any more.
std::unique_ptr<Workbench> shortRecording(enmLoggerPointer model) {
  auto desk = recorded(model, 5min);
  desk->stored().set(block::StopTime, desk->bench.World->now());
  desk->wait(31s);
  desk->bench.line().resetTraffic();
  return desk;
}

struct Undisturbed {
  Bytes Memory;
  ActivitySeries Activity;
  std::int32_t Samples = 0;
  std::uint64_t Traffic = 0;

  explicit Undisturbed(enmLoggerPointer model) {
    const auto desk = shortRecording(model);
    Memory = desk->logger().recordedBytes();
    EXPECT_EQ(desk->retrieve(), 0);
    Activity = desk->data->Get_ActivityArray();
    Samples = desk->data->Get_Samples();
    Traffic = desk->bench.line().traffic().total();
    EXPECT_GT(Samples, 5);
  }
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

TEST(Interruption, ARetrievalCutAtAnyByteLosesNothing) {
  for (const enmLoggerPointer model : Models) {
    const Undisturbed good(model);
    const std::uint64_t step = stride() * (model == LggrPntr_KRVivid ? 1 : 7);
    std::int32_t whole = 0;
    for (std::uint64_t at = 0; at < good.Traffic; at += step) {
      SCOPED_TRACE("cut after byte " + std::to_string(at) + " of " + std::to_string(good.Traffic));
      const auto desk = shortRecording(model);
      desk->bench.line().Faults.CutAfterTotal = at;
      const std::int32_t code = desk->retrieve();
      if (code == 0) {
        ++whole;
        EXPECT_TRUE(good.is(*desk->data));
        EXPECT_GT(at + 30, good.Traffic);
      }
      ASSERT_NO_FATAL_FAILURE(expectNothingLost(*desk, good));
    }
    EXPECT_LE(whole, 5);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
