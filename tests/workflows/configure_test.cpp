#include <gtest/gtest.h>

#include "errors/GlobalState.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

TEST(Configure, ArgumentsAreCheckedBeforeTheLogger) {
  // clang-format off
  const struct {
    ConfigureArguments With;
    std::int32_t VividCode, Kestrin2Code;
  } cases[] = {
      {{.Mode = 4}, 0, 10005}, {{.Mode = 6}, 10005, 10005}, {{.Mode = 0, .Epoch = 7, .DateFormat = 0}, 10005, 10005},
      {{.DateFormat = 0}, 10021, 11503},  // a Kestrin 2's are not looked at, but not written either
      {{.Epoch = 7, .DateFormat = 3, .TimeFormat = 0}, 10021, 10006}, {{.TimeFormat = 0}, 10022, 11503},
      {{.Epoch = 7, .TimeFormat = 4}, 10022, 10006}, {{.Epoch = 45, .Zone = "???"}, 10006, 10006},
      {{.Zone = "???", .Start = 1}, 10019, 10019}, {{.Zone = ""}, 0, 0},
      {{.Start = 1, .End = 1}, 10007, 10007}, {{.SetTime = 2000000000, .Start = 1999999999}, 10007, 10007},
      {{.End = 1}, 10023, 10023}, {{.SetTime = 2000000000, .End = 1999999999}, 10023, 10023},
  };
  // clang-format on
  for (const enmLoggerPointer model : Models)
    for (const auto& row : cases) {
      SCOPED_TRACE(&row - cases);
      Workbench desk(model);
      const std::int32_t code = model == LggrPntr_KRVivid ? row.VividCode : row.Kestrin2Code;
      EXPECT_EQ(desk.configure(row.With), code);
      EXPECT_EQ(desk.logger().commands().empty(), code != 0 && code != 11503);
      EXPECT_EQ(desk.battery == -7, code != 0);
      EXPECT_EQ(desk.serialNumber.empty(), code != 0);
    }
}

TEST(Configure, WhatTheLoggerGets) {
  for (const enmLoggerPointer model : Models) {
    const bool vivid = model == LggrPntr_KRVivid;
    const auto desk = recorded(model, 10min);
    EXPECT_EQ(desk->status(), 0);
    const auto handedOut = desk->data;
    for (const auto& field : {block::Counters, block::Button1, block::Button2})
      desk->stored().set(field, 0x35);
    desk->logger().clock().set(12345);
    desk->logger().forgetCommands();
    EXPECT_EQ(desk->configure({3, 60, "EST", true, 0, 0, 0, DateFormat_DDMM, TimeFormat_24hour}), 0);
    EXPECT_FALSE(globals().ErrorStack.at(0).has_value());
    EXPECT_EQ(handedOut->Get_EpochLength(), 30);
    const simulator::RecordingSetup setup = readSetup(desk->stored());
    EXPECT_EQ(setup.RecordingMode, simulator::Mode::ActivityAndStandardLight);
    EXPECT_TRUE(setup.EpochLength == 60 && setup.StartTime % 60 == 0);
    EXPECT_NEAR(static_cast<double>(setup.StartTime - desk->bench.World->now()), 60, 60);
    EXPECT_EQ(setup.StopTime, 2147483640);
    EXPECT_EQ(setup.Threshold, 2);
    for (const auto& field : {block::Counters, block::NextAddress, block::DataAvailable})
      EXPECT_EQ(desk->stored().number(field), 0U) << field.Offset;
    EXPECT_LE(std::abs(desk->logger().clock().seconds() - desk->bench.World->now()), 2);
    EXPECT_EQ(desk->battery > 30, vivid);
    EXPECT_EQ(desk->serialNumber, vivid ? "V0012345" : "K0054321");
    EXPECT_EQ(desk->heard("sleep 0"), 1U);
    const std::vector<int> shown{setup.DateFormat, setup.TimeFormat, setup.Button1, setup.Button2};
    EXPECT_TRUE(!vivid || shown == (std::vector<int>{1, 2, 5, 12}));
  }
  Workbench old(LggrPntr_KRVivid, optionsOf(LggrPntr_KRVivid, "00.01.0029"));
  EXPECT_EQ(old.configure(), 0);
  EXPECT_EQ(old.heard("sleep 0"), 0U);
}

TEST(Configure, ASetTimeRunsOn) {
  for (const std::int32_t away : {-86400, 86400 * 200}) {
    Workbench desk(LggrPntr_KRVivid);
    const std::int64_t began = desk.bench.World->now();
    const std::int32_t offset = away > 0 ? 4 * 3600 : 5 * 3600;  // daylight time has begun by then
    const auto set = static_cast<std::int32_t>(began + away - offset);
    EXPECT_EQ(desk.configure({.SetTime = set, .Start = set + 3600, .End = set + 7200}), 0);
    const std::int64_t passed = desk.bench.World->now() - began;
    EXPECT_NEAR(static_cast<double>(desk.logger().clock().seconds() - (began + away + passed)), 1, 1.1);
    EXPECT_EQ(readSetup(desk.stored()).StartTime, began + away + 3600);
    EXPECT_EQ(readSetup(desk.stored()).StopTime, began + away + 7200);
  }
}

TEST(Configure, FieldsThatAreReadBack) {
  using Fields = std::vector<std::pair<simulator::BlockField, std::size_t>>;
  // clang-format off
  const Fields compared = {
      {block::Subject, 0}, {block::Subject, 1}, {block::Subject, 65}, {block::Subject, 68}, {block::Subject, 100},
      {block::Subject, 102}, {block::Subject, 113}, {block::Subject, 118}, {block::Mode, 0}, {block::EpochLength, 0},
      {block::StartTime, 0}, {block::StopTime, 3}, {block::ZoneBias, 0}, {block::ZoneStandardBias, 0},
      {block::ZoneDaylightBias, 0}, {block::DaylightStart, 0}, {block::DaylightEnd, 0}, {block::DataAvailable, 0},
      {block::ZoneStandardName, 1}, {block::ZoneDaylightName, 0}, {block::Threshold, 0}};
  const Fields passedOver = {{block::Subject, 120}, {block::BatteryDate, 0}, {block::Button1, 0}};
  // clang-format on
  const auto misstore = [](enmLoggerPointer model, const Fields& fields, bool refused) {
    for (const auto& [field, byte] : fields) {
      SCOPED_TRACE("offset " + std::to_string(field.Offset) + " + " + std::to_string(byte));
      Workbench desk(model);
      desk.logger().Faults.MisstoredOffset = field.Offset + byte;
      desk.logger().Faults.MisstoreConfig = always();
      EXPECT_EQ(desk.configure(), refused ? 10012 : 0);
      EXPECT_EQ(desk.heard("data avail 0"), refused ? 1U : 0U);
      const auto end = desk.stored().signedNumber(block::StopTime) - desk.bench.World->now();
      EXPECT_TRUE(!refused || (std::abs(end) <= 5 && desk.stored().number(block::DataAvailable) == 0));
    }
  };
  for (const enmLoggerPointer model : Models) {
    misstore(model, compared, true);
    misstore(model, passedOver, false);
    misstore(model, {{block::DisplayFormats, 0}}, model == LggrPntr_KRVivid);
  }
  // Tenths are stored, so a finer weight does not come back.
  Workbench desk(LggrPntr_KRVivid);
  desk.subject->Let_Weight(72.25F);
  EXPECT_EQ(desk.configure(), 10012);
}

/// Whatever number stands in the block, the logger can be asked and set up anew. Without its calibrations it
/// cannot.
TEST(Configure, RepairsADamagedConfiguration) {
  for (std::size_t offset = block::Subject.Offset; offset < simulator::ConfigBlock::Size; ++offset)
    for (const std::int64_t value : {0x00, 0x7F, 0x80, 0xFF}) {
      SCOPED_TRACE("offset " + std::to_string(offset) + ", " + std::to_string(value));
      Workbench desk(LggrPntr_KRVivid);
      for (std::size_t end = std::min(offset + 4, simulator::ConfigBlock::Size), at = offset; at < end; ++at)
        desk.stored().set({at, 1}, value);
      EXPECT_EQ(desk.status(), 0);
      const std::int32_t code = desk.configure();
      EXPECT_TRUE(code == 0 || code == 10011) << code;
    }
}

TEST(Configure, Attempts) {
  const std::tuple<std::int16_t, simulator::Fault, std::int32_t, std::size_t> cases[] = {
      {3, always(), 10012, 3}, {-5, always(), 10012, 1}, {3, {0, 2}, 0, 3}, {2, {0, 2}, 10012, 2}};
  for (const auto& [retries, misstored, code, attempts] : cases) {
    Workbench desk(LggrPntr_KRII);
    EXPECT_EQ(desk.main->Get_MaxCommunicationRetries(), 1);
    desk.main->Let_MaxCommunicationRetries(retries);
    desk.logger().Faults.MisstoreConfig = misstored;
    desk.subject->Let_GUID("");
    desk.subject->Let_Identity("");
    EXPECT_EQ(desk.configure(), code);
    EXPECT_EQ(desk.heard("config"), attempts) << retries;
    EXPECT_TRUE(desk.portClosed());
    // What was filled in stays.
    EXPECT_EQ(desk.subject->Get_Identity(), "K0054321");
    EXPECT_EQ(desk.subject->Get_GUID().size(), 32U);
  }
  // A clock that refuses is not tried again.
  Workbench stubborn(LggrPntr_KRVivid);
  stubborn.main->Let_MaxCommunicationRetries(3);
  stubborn.logger().Faults.RefuseClock = always();
  stubborn.logger().clock().set(0);
  EXPECT_EQ(stubborn.configure(), 10025);
  const auto& lines = stubborn.logger().commands();
  EXPECT_EQ(std::ranges::count_if(lines, [](auto& line) { return line.starts_with("clock time"); }), 1);
}

}  // namespace
}  // namespace hy_wristlog::workbench
