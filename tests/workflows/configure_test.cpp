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

struct Refusal {
  const char* Name;
  std::function<void(Workbench&)> Arrange;
  std::int32_t Code;
};

TEST(Configure, LoggersThatAreRefused) {
  const auto set = [](simulator::BlockField field, std::int64_t value) {
    return [=](Workbench& d) { d.stored().set(field, value); };
  };
  const std::vector<Refusal> cases = {
      {"two docks",
       [](auto& d) {
         d.bench.World->addDock({d.bench.Dock->kind(), 41, {}});
       },
       10020},
      {"no dock", [](auto& d) { d.bench.Dock->unplug(); }, 10003},
      {"no logger", [](auto& d) { d.bench.Dock->pullOut(); }, 10003},
      {"silent", [](auto& d) { d.logger().Faults.Silent = true; }, 10003},
      {"another model", [](auto& d) { d.stored().set(block::Model, d.Model == LggrPntr_KRVivid ? 1 : 2); },
       10009},
      {"another structure", set(block::Version, 9), 10009},
      {"no activity calibration", set(block::ActivityCalibration, 0), 10011},
      {"no light calibration",
       [](auto& d) {
         d.stored().set(d.Model == LggrPntr_KRVivid ? block::GreenCalibration : block::LightCalibration, 0);
       },
       10011},
      {"a clock that refuses",
       [](auto& d) {
         d.logger().Faults.RefuseClock = always();
         d.logger().clock().set(d.logger().clock().seconds() - 20);
       },
       10025},
      {"bad config", [](auto& d) { d.logger().Faults.BadConfigChecksum = always(); }, 11505},
      {"bad lines", [](auto& d) { d.logger().Faults.BadLineChecksum = always(); }, 11507},
      {"no echo",
       [](auto& d) {
         d.logger().Faults.LoseEcho = {6, simulator::Fault::Always};
       },
       3001},
      {"cancelled", [](auto& d) { d.logger().Faults.Transfer.CancelReceive = always(); }, 3010},
      {"refused packets", [](auto& d) { d.logger().Faults.Transfer.NakPacket = always(); }, 3011},
      {"lost answers", [](auto& d) { d.logger().Faults.Transfer.LoseAnswer = always(); }, 3010},
      {"end refused", [](auto& d) { d.logger().Faults.Transfer.NakEnd = always(); }, 3011},
      {"misstored", [](auto& d) { d.logger().Faults.MisstoreConfig = always(); }, 10012},
      {"port cannot be set",
       [](auto& d) {
         d.bench.Dock->Faults.Open = {8010, always()};
       },
       8010},
  };
  for (const enmLoggerPointer model : Models) {
    for (const Refusal& row : cases) {
      SCOPED_TRACE(row.Name);
      Workbench desk(model);
      row.Arrange(desk);
      EXPECT_EQ(desk.configure(), row.Code);
      EXPECT_TRUE(desk.portClosed());
      EXPECT_EQ(desk.battery, -7);
    }
    BenchOptions options = optionsOf(model);
    options.Logger.Firmware = "01.02.0000";
    EXPECT_EQ(Workbench(model, options).configure(), 10010);
  }
  for (const bool held : {false, true}) {
    Workbench vivid(LggrPntr_KRVivid), kestrin2(LggrPntr_KRII);
    (held ? vivid.bench.Dock->Faults.Held : vivid.bench.Dock->Faults.LockedUp) = true;
    (held ? kestrin2.bench.Dock->Faults.Held : kestrin2.bench.Dock->Faults.LockedUp) = true;
    EXPECT_EQ(kestrin2.configure(), 11508);
    const simulator::BenchScope scope(vivid.bench);
    EXPECT_EQ(vivid.configure(), held ? 11508 : 10003);
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
  const struct {
    simulator::BlockField Field;
    std::size_t Byte;
    bool Compared, VividOnly;
  } cases[] = {
      {block::Subject, 0, true, false},
      {block::Subject, 1, true, false},
      {block::Subject, 65, true, false},
      {block::Subject, 68, true, false},
      {block::Subject, 100, true, false},
      {block::Subject, 102, true, false},
      {block::Subject, 113, true, false},
      {block::Subject, 118, true, false},
      {block::Subject, 120, false, false},
      {block::BatteryDate, 0, false, false},
      {block::LightCalibration, 0, false, false},
      {block::ActivityCalibration, 0, false, false},
      {block::Mode, 0, true, false},
      {block::EpochLength, 0, true, false},
      {block::StartTime, 0, true, false},
      {block::StopTime, 3, true, false},
      {block::ZoneBias, 0, true, false},
      {block::ZoneStandardBias, 0, true, false},
      {block::ZoneDaylightBias, 0, true, false},
      {block::DaylightStart, 0, true, false},
      {block::DaylightEnd, 0, true, false},
      {block::ZoneStandardName, 1, true, false},
      {block::ZoneDaylightName, 0, true, false},
      {block::DisplayFormats, 0, true, true},
      {block::RedCalibration, 0, false, false},
      {block::Button1, 0, false, false},
      {block::Counters, 0, false, false},
      {block::Threshold, 0, true, false},
      {block::DataAvailable, 0, true, false},
      {block::ScoreMinimum, 0, false, false},
      {block::OffWristOn, 0, false, false},
      {block::Unused2, 0, false, false},
  };
  for (const enmLoggerPointer model : Models) {
    for (const auto& row : cases) {
      SCOPED_TRACE("offset " + std::to_string(row.Field.Offset) + " + " + std::to_string(row.Byte));
      Workbench desk(model);
      desk.logger().Faults.MisstoredOffset = row.Field.Offset + row.Byte;
      desk.logger().Faults.MisstoreConfig = always();
      const bool refused = row.Compared && (!row.VividOnly || model == LggrPntr_KRVivid);
      EXPECT_EQ(desk.configure(), refused ? 10012 : 0);
      EXPECT_EQ(desk.heard("data avail 0"), refused ? 1U : 0U);
      if (!refused) continue;
      EXPECT_LE(std::abs(desk.stored().signedNumber(block::StopTime) - desk.bench.World->now()), 5);
      EXPECT_EQ(desk.stored().number(block::DataAvailable), 0U);
    }
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

  // The first attempt breaks off, the second is refused, or aborted: whose code stands.
  Workbench unplugged(LggrPntr_KRII);
  unplugged.main->Let_MaxCommunicationRetries(3);
  unplugged.bench.Dock->unplugAfterBytes(200);
  EXPECT_EQ(unplugged.configure(), 10003);
}

}  // namespace
}  // namespace hy_wristlog::workbench
