#include <gtest/gtest.h>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using simulator::always;
using simulator::once;

TEST(Configure, ArgumentsAreCheckedBeforeTheLogger) {
  const struct {
    ConfigureArguments With;
    std::int32_t VividCode, Kestrin2Code;
  } cases[] = {
      {{.Mode = 0}, 10005, 10005},
      {{.Mode = 4}, 0, 10005},
      {{.Mode = 6}, 10005, 10005},
      {{.Mode = -1, .Epoch = 7, .DateFormat = 0}, 10005, 10005},
      {{.DateFormat = 0}, 10021, 11503},  // not looked at, but not written either
      {{.Epoch = 7, .DateFormat = 3, .TimeFormat = 0}, 10021, 10006},
      {{.TimeFormat = 0}, 10022, 11503},
      {{.Epoch = 7, .TimeFormat = 4}, 10022, 10006},
      {{.Epoch = 0, .Zone = "???"}, 10006, 10006},
      {{.Epoch = 45}, 10006, 10006},
      {{.Epoch = -30}, 10006, 10006},
      {{.Zone = "???"}, 10019, 10019},
      {{.Zone = "???", .Start = 1}, 10019, 10019},
      {{.Start = 1, .End = 1}, 10007, 10007},
      {{.End = 1}, 10023, 10023},
      {{.SetTime = 2000000000, .Start = 1999999999}, 10007, 10007},
      {{.SetTime = 2000000000, .End = 1999999999}, 10023, 10023},
      {{.Zone = ""}, 0, 0},
  };
  for (const enmLoggerPointer model : Models) {
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
  for (const std::int32_t type : {-1, 2, 3}) {
    Workbench desk(static_cast<enmLoggerPointer>(type), optionsOf(LggrPntr_KRVivid));
    EXPECT_EQ(desk.configure({.Mode = 0}), 10009);
  }
}

TEST(Configure, LoggersThatAreRefused) {
  using Transfer = simulator::TransferFaults;
  const struct {
    const char* Name;
    Arrange Do;
    std::int32_t Code;
  } cases[] = {
      {"two docks", SecondDock, 10020},
      {"no dock", NoDock, 10003},
      {"no logger", NoLogger, 10003},
      {"silent", Silent, 10003},
      {"another model", OtherModel, 10009},
      {"another structure", set(block::Version, 9), 10009},
      {"no activity calibration", set(block::ActivityCalibration, 0), 10011},
      {"no light calibration", all({set(block::GreenCalibration, 0), set(block::LightCalibration, 0)}),
       10011},
      {"a clock that refuses",
       [](Workbench& d) {
         d.logger().Faults.RefuseClock = always();
         d.logger().clock().set(d.logger().clock().seconds() - 20);
       },
       10025},
      {"bad config", badConfig(always()), 11505},
      {"bad lines", badLines(always()), 11507},
      {"no echo", [](Workbench& d) { d.logger().Faults.LoseEcho.Times = simulator::Fault::Always; }, 10003},
      {"cancelled", transferFault(&Transfer::CancelReceive, always()), 3010},
      {"refused packets", transferFault(&Transfer::NakPacket, always()), 3011},
      {"lost answers", transferFault(&Transfer::LoseAnswer, always()), 3010},
      {"end refused", transferFault(&Transfer::NakEnd, always()), 3011},
      {"misstored", [](Workbench& d) { d.logger().Faults.MisstoreConfig = always(); }, 10012},
      {"port cannot be opened", openFails(8010, always()), 8010},
  };
  for (const enmLoggerPointer model : Models) {
    for (const auto& row : cases) {
      SCOPED_TRACE(row.Name);
      Workbench desk(model);
      row.Do(desk);
      EXPECT_EQ(desk.configure(), row.Code);
      EXPECT_TRUE(desk.portClosed());
      EXPECT_EQ(desk.battery, -7);
    }
    BenchOptions options = optionsOf(model);
    options.Logger.Firmware = "01.02.0000";
    EXPECT_EQ(Workbench(model, options).configure(), 10010);
  }
  for (const enmLoggerPointer model : Models) {
    Workbench lockedUp(model), held(model);
    held.bench.Dock->Faults.Held = true;
    EXPECT_EQ(held.configure(), 11508);
    const simulator::BenchScope scope(lockedUp.bench);
    LockedUp(lockedUp);
    EXPECT_EQ(lockedUp.configure(), model == LggrPntr_KRII ? 11508 : 10003);
  }
}

TEST(Configure, WhatTheLoggerGets) {
  for (const enmLoggerPointer model : Models) {
    Workbench desk(model);
    desk.logger().setUp(ordinarySetup(*desk.bench.World, simulator::Mode::Activity, 15));
    desk.logger().wear(10min);
    desk.stored().set(block::Counters, 0x35);
    desk.stored().set(block::Button1, 0);
    desk.stored().set(block::Button2, 0);
    desk.logger().clock().set(12345);
    desk.logger().forgetCommands();
    ConfigureArguments with{
        .Mode = 3, .Epoch = 60, .DateFormat = DateFormat_DDMM, .TimeFormat = TimeFormat_24hour};
    EXPECT_EQ(desk.configure(with), 0);
    const simulator::RecordingSetup setup = readSetup(desk.stored());
    EXPECT_EQ(setup.RecordingMode, simulator::Mode::ActivityAndStandardLight);
    EXPECT_EQ(setup.EpochLength, 60);
    EXPECT_EQ(setup.StartTime % 60, 0);
    EXPECT_NEAR(static_cast<double>(setup.StartTime - desk.bench.World->now()), 60, 60);
    EXPECT_EQ(setup.StopTime, 2147483640);
    EXPECT_EQ(setup.Threshold, 2);
    EXPECT_EQ(setup.Subject.Identity, "Jane");
    EXPECT_EQ(setup.Subject.WeightTenths, 701);
    EXPECT_EQ(setup.Subject.HeightTenths, 1685);
    EXPECT_EQ(desk.stored().number(block::Counters), 0U);
    EXPECT_EQ(desk.stored().number(block::NextAddress), 0U);
    EXPECT_EQ(desk.stored().number(block::DataAvailable), 0U);
    EXPECT_LE(std::abs(desk.logger().clock().seconds() - desk.bench.World->now()), 2);
    EXPECT_TRUE(desk.logger().waiting());
    EXPECT_EQ(desk.battery > 30, model == LggrPntr_KRVivid);
    EXPECT_EQ(desk.serialNumber, model == LggrPntr_KRVivid ? "V0012345" : "K0054321");
    EXPECT_EQ(desk.heard("sleep 0"), 1U);
    if (model != LggrPntr_KRVivid) continue;
    EXPECT_EQ(setup.DateFormat, 1);
    EXPECT_EQ(setup.TimeFormat, 2);
    EXPECT_EQ(setup.Button1, 5);
    EXPECT_EQ(setup.Button2, 12);
  }
  BenchOptions old = optionsOf(LggrPntr_KRVivid);
  old.Logger.Firmware = "00.01.0029";
  Workbench desk(LggrPntr_KRVivid, old);
  EXPECT_EQ(desk.configure(), 0);
  EXPECT_EQ(desk.heard("sleep 0"), 0U);
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
  struct Field {
    simulator::BlockField Where;
    std::size_t Byte = 0;
  };
  // clang-format off
  const std::vector<Field> compared = {
      {block::Subject, 0}, {block::Subject, 1}, {block::Subject, 65}, {block::Subject, 68}, {block::Subject, 100},
      {block::Subject, 102}, {block::Subject, 113}, {block::Subject, 118}, {block::Mode}, {block::EpochLength},
      {block::StartTime}, {block::StopTime, 3}, {block::ZoneBias}, {block::ZoneStandardBias},
      {block::ZoneDaylightBias}, {block::DaylightStart}, {block::DaylightEnd}, {block::ZoneStandardName, 1},
      {block::ZoneDaylightName}, {block::Threshold}, {block::DataAvailable}};
  const std::vector<Field> passedOver = {
      {block::Subject, 120}, {block::BatteryDate}, {block::LightCalibration}, {block::ActivityCalibration},
      {block::RedCalibration}, {block::Button1}, {block::Counters}, {block::ScoreMinimum}, {block::OffWristOn},
      {block::Unused2}};
  // clang-format on
  const auto misstoring = [](enmLoggerPointer model, const Field& field, bool refused) {
    SCOPED_TRACE("offset " + std::to_string(field.Where.Offset) + " + " + std::to_string(field.Byte));
    Workbench desk(model);
    desk.logger().Faults.MisstoredOffset = field.Where.Offset + field.Byte;
    desk.logger().Faults.MisstoreConfig = always();
    EXPECT_EQ(desk.configure(), refused ? 10012 : 0);
    EXPECT_EQ(desk.heard("data avail 0"), refused ? 1U : 0U);
    if (!refused) return;
    EXPECT_LE(std::abs(desk.stored().signedNumber(block::StopTime) - desk.bench.World->now()), 5);
    EXPECT_EQ(desk.stored().number(block::DataAvailable), 0U);
  };
  for (const enmLoggerPointer model : Models) {
    for (const Field& field : compared) misstoring(model, field, true);
    for (const Field& field : passedOver) misstoring(model, field, false);
    misstoring(model, {block::DisplayFormats}, model == LggrPntr_KRVivid);
  }
  // Tenths are stored, so a finer weight does not come back.
  Workbench desk(LggrPntr_KRVivid);
  desk.subject->Let_Weight(72.25F);
  EXPECT_EQ(desk.configure(), 10012);
}

TEST(Configure, Attempts) {
  const struct {
    std::int16_t Retries;
    simulator::Fault Misstored;
    std::int32_t Code;
    std::size_t Attempts;
  } cases[] = {
      {1, always(), 10012, 1}, {3, always(), 10012, 3}, {0, always(), 10012, 1}, {-5, always(), 10012, 1},
      {2, once(), 0, 2},       {3, {0, 2}, 0, 3},       {2, {0, 2}, 10012, 2},   {5, {}, 0, 1}};
  for (const auto& row : cases) {
    SCOPED_TRACE(&row - cases);
    Workbench desk(LggrPntr_KRII);
    EXPECT_EQ(desk.main->Get_MaxCommunicationRetries(), 1);
    desk.main->Let_MaxCommunicationRetries(row.Retries);
    desk.logger().Faults.MisstoreConfig = row.Misstored;
    desk.subject->Let_GUID("");
    desk.subject->Let_Identity("");
    EXPECT_EQ(desk.configure(), row.Code);
    EXPECT_EQ(desk.heard("config"), row.Attempts);
    EXPECT_TRUE(desk.portClosed());
    // What was filled in stays.
    EXPECT_EQ(desk.subject->Get_Identity(), "K0054321");
    EXPECT_EQ(desk.subject->Get_GUID().size(), 32U);
  }
  Workbench stubborn(LggrPntr_KRVivid);
  stubborn.main->Let_MaxCommunicationRetries(3);
  stubborn.logger().Faults.RefuseClock = always();
  stubborn.logger().clock().set(0);
  EXPECT_EQ(stubborn.configure(), 10025);
  std::size_t clocks = 0;
  for (const std::string& line : stubborn.logger().commands()) clocks += line.starts_with("clock time");
  EXPECT_EQ(clocks, 1U);

  // The code is the last attempt's.
  Workbench unplugged(LggrPntr_KRII);
  unplugged.main->Let_MaxCommunicationRetries(3);
  unplugged.bench.Dock->unplugAfterBytes(200);
  EXPECT_EQ(unplugged.configure(), 10003);
}

}  // namespace
}  // namespace hy_wristlog::workbench
