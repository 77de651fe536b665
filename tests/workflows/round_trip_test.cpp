#include <gtest/gtest.h>

#include <cmath>
#include <thread>

#include "base/inside.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using simulator::EpochReading;

/// What a logger keeps of a value: steps of 1 in 32 on its scale of counts, a 32nd of an octave of light.
bool isActivity(std::int32_t decoded, double counts) {
  return decoded >= 0 && std::abs(decoded - std::min(counts, 32767.0)) <= 2 + counts / 30;
}
bool isLight(float decoded, double value) {
  return value <= 0 ? decoded < 0.02 : std::abs(std::log2(decoded / value)) <= 1 / 60.0;
}

void roundTrip(enmLoggerPointer model, std::int32_t mode, std::int32_t epoch) {
  constexpr int Epochs = 70;
  Workbench desk(model);
  ASSERT_EQ(desk.configure({.Mode = mode, .Epoch = epoch}), 0);
  const std::int64_t start = desk.stored().signedNumber(block::StartTime);
  simulator::WearOptions wear;
  wear.Seed = static_cast<std::uint32_t>(epoch);
  wear.MarkersPerDay = 400;
  desk.logger().wear(std::chrono::seconds(start - desk.bench.World->now() + Epochs * epoch), wear);
  desk.subject = std::make_shared<Class_Subject>();
  ASSERT_EQ(desk.retrieve(), 0);
  const Class_VardenLogger& data = *desk.data;

  const std::int64_t elapsed = desk.bench.World->now() - start;
  EXPECT_NEAR(data.Get_Samples(), static_cast<double>(elapsed) / epoch, 1.5);
  EXPECT_EQ(secondsBetween(UnixEpochDate, data.Get_StartTimeGMT()), start);
  EXPECT_EQ(desk.subject->Get_Identity(), "Jane");
  EXPECT_EQ(desk.subject->Get_GUID(), "0123456789ABCDEF0123456789ABCDEF");
  EXPECT_EQ(desk.subject->Get_DOB(), dateSerial(1984, 5, 6));
  EXPECT_FLOAT_EQ(desk.subject->Get_Weight(), 70.1F);

  const bool vivid = model == LggrPntr_KRVivid;
  const bool activity = mode == 1 || mode == 3 || mode == 5;
  const bool colours = vivid && (mode == 2 || mode == 3);
  const bool light = mode != 1 && !colours;
  const auto sizeOf = [&](bool has) { return has ? static_cast<std::size_t>(data.Get_Samples()) : 0; };
  ASSERT_EQ(data.Get_ActivityArray().size(), sizeOf(activity));
  ASSERT_EQ(data.Get_LightArray().size(), sizeOf(light));
  ASSERT_EQ(data.Get_RedLightArray().size(), sizeOf(colours));
  ASSERT_EQ(data.Get_WristStatusArray().size(), sizeOf(vivid));
  simulator::Wearer wearer(wear, std::chrono::minutes(-300));
  std::int32_t markers = 0;
  // The last of them may have ended in the dock.
  for (std::size_t i = 0; i + 1 < Epochs; ++i) {
    SCOPED_TRACE(i);
    const EpochReading seen = wearer.read(start + static_cast<std::int64_t>(i) * epoch, epoch);
    markers += seen.Button1;
    EXPECT_EQ(data.Get_MarkerArray()[i] == Tristate::True, seen.Button1);
    EXPECT_TRUE(!activity || isActivity(data.Get_ActivityArray()[i], seen.Counts)) << seen.Counts;
    EXPECT_TRUE(!light || isLight(data.Get_LightArray()[i], seen.Lux)) << seen.Lux;
    EXPECT_TRUE(!vivid || (data.Get_WristStatusArray()[i] == Tristate::True) == seen.OffWrist);
    if (!colours) continue;
    EXPECT_PRED2(isLight, data.Get_RedLightArray()[i], seen.Red);
    EXPECT_PRED2(isLight, data.Get_GreenLightArray()[i], seen.Green);
    EXPECT_PRED2(isLight, data.Get_BlueLightArray()[i], seen.Blue);
  }
  EXPECT_NEAR(data.Get_MarkerCount(), markers, 2);
}

TEST(RoundTrip, WhatWasWornIsWhatComesBack) {
  for (const enmLoggerPointer model : Models)
    for (int mode = VardenMode_ActivityOnly; mode <= (model == LggrPntr_KRII ? 3 : 5); ++mode)
      for (const std::int32_t epoch : {15, 30, 60, 120, 300}) {
        SCOPED_TRACE("model " + std::to_string(model) + ", mode " + std::to_string(mode) + ", " +
                     std::to_string(epoch));
        roundTrip(model, mode, epoch);
      }
}

/// The stored changes are those of a coming year, and so must be the ones that they are compared with.
TEST(RoundTrip, AZoneIsKnownAgainInTheNextYear) {
  for (const char* zone : {"EGY", "ISR", "GRE", "PSA"}) {
    auto options = optionsOf(LggrPntr_KRVivid);
    options.World.Begins = std::chrono::sys_days{std::chrono::year{2026} / 11 / 20};
    const auto stored = [&] {
      Workbench november(LggrPntr_KRVivid, options);
      EXPECT_EQ(november.configure({.Zone = zone}), 0);
      return november.stored();
    }();
    options.World.Begins += std::chrono::days{90};
    Workbench february(LggrPntr_KRVivid, options);
    february.stored() = stored;
    EXPECT_EQ(february.status(), 0);
    EXPECT_EQ(Inside::of(*february.data).record.TimeZone->Abbreviation, zone);
  }
}

/// Each thread has its world, its session and its recording; what they share is locked.
TEST(Threads, RunTheirWorkflowsSideBySide) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([i] { roundTrip(Models[i % 2], VardenMode_ActivityOnly, 30); });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace hy_wristlog::workbench
