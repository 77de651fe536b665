#include <gtest/gtest.h>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using simulator::always;
using simulator::Happening;
using simulator::once;

Arrange setText(simulator::BlockField field, const char* text) {
  return [=](Workbench& desk) { desk.stored().setText(field, text); };
}
Arrange subjectByte(std::size_t offset, std::size_t count, char with) {
  return [=](Workbench& desk) {
    for (std::size_t i = 0; i < count; ++i) desk.stored().set({block::Subject.Offset + offset + i, 1}, with);
  };
}
TEST(Retrieve, RefusalsLeaveTheLoggerAsItIs) {
  const struct {
    const char* Name;
    Arrange Do;
    std::int32_t Code;
  } cases[] = {
      {"two docks", SecondDock, 10020},
      {"no dock", NoDock, 10003},
      {"no logger", NoLogger, 10003},
      {"another model", OtherModel, 10009},
      {"another structure", set(block::Version, 9), 10009},
      {"no calibration", set(block::ActivityCalibration, 0), 10011},
      {"no mode", set(block::Mode, 0), 10005},
      {"an engineers' mode", set(block::Mode, 33), 10005},
      {"epoch", set(block::EpochLength, 45), 10006},
      {"no zone", setText(block::ZoneStandardName, ""), 10019},
      {"subject's version", subjectByte(0, 1, 0), 10014},
      {"subject's gender", subjectByte(100, 1, '\\'), 10014},
      {"subject's GUID", subjectByte(68, 32, ' '), 10014},
      {"subject's birth", subjectByte(101, 8, ' '), 10014},
      {"subject's weight", subjectByte(109, 5, ' '), 10014},
      {"subject's height", subjectByte(114, 5, ' '), 10014},
      {"resets", set(block::Counters, 1), 10026},
      {"the first of several", all({set(block::Counters, 1), subjectByte(101, 8, ' ')}), 10014},
      {"bad config", badConfig(always()), 11505},
      {"bad lines", badLines(always()), 11507},
  };
  for (const enmLoggerPointer model : Models) {
    for (const auto& row : cases) {
      SCOPED_TRACE(row.Name);
      auto desk = recorded(model);
      row.Do(*desk);
      const auto memory = desk->logger().recordedBytes();
      EXPECT_EQ(desk->retrieve(), row.Code);
      EXPECT_TRUE(desk->portClosed());
      EXPECT_EQ(desk->heard("acq stop 0"), 0U);
      EXPECT_GE(desk->logger().recordedBytes().size(), memory.size());
      EXPECT_NE(desk->data, nullptr);
      EXPECT_EQ(desk->subject->Get_Identity(),
                row.Code == 10026 || row.Code == 10019 ? "Subject 17" : "Jane");
    }
    auto special = recorded(model);  // activity and special light, which a Kestrin 2 does not have
    special->stored().set(block::Mode, 7);
    EXPECT_EQ(special->retrieve() == 10005, model == LggrPntr_KRII);
    Workbench fresh(model);
    fresh.logger().setUp(ordinarySetup(*fresh.bench.World, simulator::Mode::Activity, 30));
    EXPECT_EQ(fresh.retrieve(), 10027);
    EXPECT_EQ(fresh.retrieve(true), 10015);
    EXPECT_FALSE(fresh.logger().waiting());
    BenchOptions options = optionsOf(model);
    options.Logger.Firmware = "01.02.0000";
    EXPECT_EQ(recorded(model, options)->retrieve(true), 10010);
    for (const std::int32_t type : {-1, 2, 3}) {
      Workbench desk(static_cast<enmLoggerPointer>(type), optionsOf(model));
      EXPECT_EQ(desk.retrieve(), 10009);
      EXPECT_NE(desk.data, nullptr);
    }
  }
}

TEST(Retrieve, AGoodOne) {
  for (const enmLoggerPointer model : Models) {
    auto desk = recorded(model);
    const std::int64_t before = desk->bench.World->now();
    desk->main->AbortComms();
    EXPECT_EQ(desk->retrieve(), 0);
    EXPECT_EQ(desk->result, Decode_OK);
    EXPECT_FALSE(desk->lowBattery);
    EXPECT_TRUE(desk->portClosed());
    EXPECT_NEAR(desk->data->Get_Samples(), 39, 1);
    EXPECT_EQ(desk->subject->Get_Identity(), "Subject 17");
    EXPECT_FLOAT_EQ(desk->subject->Get_Weight(), 72.3F);
    EXPECT_EQ(desk->stored().number(block::DataAvailable), 0U);
    EXPECT_FALSE(desk->logger().recording());
    // The end in the logger is the end of the last sample.
    const std::int64_t end = desk->stored().signedNumber(block::StartTime) + 30 * desk->data->Get_Samples();
    EXPECT_EQ(desk->stored().signedNumber(block::StopTime), std::min(end, desk->bench.World->now()));
    EXPECT_LT(desk->stored().signedNumber(block::StopTime), before + 30);
    // The memory still holds it all.
    desk->wait(11s);
    const auto samples = desk->data->Get_ActivityArray();
    EXPECT_EQ(desk->retrieve(), 0);
    EXPECT_EQ(desk->data->Get_ActivityArray(), samples);
  }
  // A recording that had ended keeps its end.
  auto ended = recorded(LggrPntr_KRVivid);
  const std::int64_t stop = ended->bench.World->now() - 300;
  ended->stored().set(block::StopTime, stop);
  EXPECT_EQ(ended->retrieve(), 0);
  EXPECT_EQ(ended->stored().signedNumber(block::StopTime), stop);

  auto noSubject = recorded(LggrPntr_KRVivid);
  noSubject->subject.reset();
  EXPECT_EQ(noSubject->retrieve(), 91);
  EXPECT_TRUE(noSubject->portClosed());
}

TEST(Retrieve, WarningsThatAreIgnored) {
  const Arrange future = [](Workbench& d) {
    d.stored().set(block::DataAvailable, 0);
    d.stored().set(block::StartTime, d.bench.World->now() + 90);
  };
  const Arrange lost = set(block::ZoneBias, 123);
  const struct {
    const char* Name;
    Arrange Do;
    std::int32_t Code, Warned;
  } cases[] = {
      {"subject", subjectByte(101, 8, ' '), 10014, 10014},
      {"resets", set(block::Counters, 1), 10026, 10026},
      {"resets behind the subject", all({set(block::Counters, 1), subjectByte(101, 8, ' ')}), 10026, 10014},
      {"other zone of the same bias", setText(block::ZoneStandardName, "IND"), 10028, 10028},
      {"unknown abbreviation", setText(block::ZoneStandardName, "QQQ"), 10028, 10028},
      {"UNK", setText(block::ZoneStandardName, "UNK"), 10028, 10028},
      {"no zone of that bias", lost, 10028, 10028},
      {"zone last", all({set(block::Counters, 1), lost}), 10028, 10026},
      {"waiting with data", future, 0, 10027},
      {"waiting, then resets", all({future, set(block::Counters, 1)}), 10026, 10027},
  };
  for (const enmLoggerPointer model : Models) {
    for (const auto& row : cases) {
      SCOPED_TRACE(row.Name);
      auto desk = recorded(model);
      row.Do(*desk);
      EXPECT_EQ(desk->retrieve(), row.Warned);
      EXPECT_EQ(desk->heard("show data"), 0U);
      desk->wait(11s);
      EXPECT_EQ(desk->retrieve(true), row.Code);
      EXPECT_NEAR(desk->data->Get_Samples(), 39, 2);
      EXPECT_EQ(desk->stored().number(block::DataAvailable), 0U);
      if (row.Code != 10028) continue;
      // The zone taken for the stranger's.
      EXPECT_EQ(desk->data->Get_TZstandardAbbrev().size(), 3U);
      EXPECT_EQ(desk->data->inside().record.TZbias, desk->data->inside().record.TimeZone->Bias);
    }
  }
}

TEST(Retrieve, VerdictsOfTheDecoder) {
  const auto poke = [](std::size_t at, std::vector<std::uint8_t> bytes) {
    return [=](Workbench& d) {
      for (std::size_t i = 0; i < bytes.size(); ++i) d.logger().memory().write(at + i, bytes[i]);
    };
  };
  const Arrange ended = [](Workbench& d) {
    d.stored().set(block::StopTime, d.bench.World->now());
    d.wait(40s);
  };
  const struct {
    const char* Name;
    Arrange Do;
    enmDecodeResult Result;
    std::int32_t Code;
    bool FlagCleared;
  } cases[] = {
      {"half an event", all({ended, set(block::NextAddress, 3)}), Decode_OK, 10029, false},
      {"stray bytes in front", poke(0, {1}), Decode_NonEventDataOutsideAcquisition, 10030, false},
      {"an unknown event", poke(40, {253, 0}), Decode_EventDecodingError, 10030, true},
      {"memory full", poke(30, {253, 4, 0, 0, 0, 0, 105}), Decode_MemoryFull, 0, true},
  };
  for (const enmLoggerPointer model : Models) {
    for (const auto& row : cases) {
      for (const bool ignore : {false, true}) {
        SCOPED_TRACE(std::string(row.Name) + (ignore ? ", ignored" : ""));
        auto desk = recorded(model);
        row.Do(*desk);
        desk->result = static_cast<enmDecodeResult>(99);
        EXPECT_EQ(desk->retrieve(ignore), row.Code);
        EXPECT_EQ(desk->result, row.Result);
        const bool cleared = row.FlagCleared && (ignore || row.Code == 0);
        EXPECT_EQ(desk->stored().number(block::DataAvailable) == 0, cleared);
        EXPECT_TRUE(desk->portClosed());
      }
    }
  }
}

/// A recording that lay in its logger for more than a month is told, but not kept from the host.
TEST(Retrieve, AnOldRecording) {
  for (const enmLoggerPointer model : Models) {
    auto desk = recorded(model);
    desk->stored().set(block::StopTime, desk->bench.World->now());
    desk->wait(31 * 24h);
    const bool vivid = model == LggrPntr_KRVivid;
    EXPECT_EQ(desk->retrieve(), vivid ? 10030 : 0);
    EXPECT_EQ(desk->result, vivid ? Decode_TooLongSinceLastAcqStop : Decode_OK);
    EXPECT_NEAR(desk->data->Get_Samples(), 39, 1);
    EXPECT_EQ(desk->stored().number(block::DataAvailable), 0U);
  }
}

TEST(Retrieve, LowBattery) {
  const struct {
    Arrange Do;
    bool Vivid, Kestrin2;
  } cases[] = {
      {[](auto& d) { d.logger().battery().setVoltages(2.9, 2.9); }, false, false},
      {[](auto& d) { d.logger().battery().setVoltages(2.899, 2.899); }, false, true},
      {[](auto& d) { d.logger().battery().setVoltages(3.0, 2.8); }, true, false},
      {[](auto& d) { d.logger().battery().setVoltages(2.8, 2.6); }, true, true},
  };
  for (const auto& row : cases) {
    for (const enmLoggerPointer model : Models) {
      SCOPED_TRACE(&row - cases);
      auto desk = recorded(model);
      row.Do(*desk);
      EXPECT_EQ(desk->retrieve(), 0);
      EXPECT_EQ(desk->lowBattery, model == LggrPntr_KRVivid ? row.Vivid : row.Kestrin2);
    }
  }
  // Told by the recording alone.
  simulator::WearOptions wear;
  wear.Happenings = {{.After = 10min, .What = Happening::Kind::BatteryLow}};
  auto desk = recorded(LggrPntr_KRVivid, 20min, 30, wear);
  desk->logger().battery().setVoltages(3.0, 3.0);
  EXPECT_EQ(desk->retrieve(), 0);
  EXPECT_TRUE(desk->lowBattery);
}

TEST(Retrieve, Attempts) {
  for (const std::int32_t bad : {2, 3, 4, 6}) {  // sent configurations; two of them spoil an attempt
    auto desk = recorded(LggrPntr_KRVivid);
    desk->main->Let_MaxCommunicationRetries(3);
    desk->logger().Faults.BadConfigChecksum = {0, bad};
    EXPECT_EQ(desk->retrieve(), bad == 6 ? 11505 : 0);
    EXPECT_EQ(desk->heard("show config"), bad == 6 ? 6U : static_cast<std::size_t>(bad) + 2);
    EXPECT_TRUE(desk->portClosed());
  }
  // Another attempt begins at the dock; what a host is told is what the last one found.
  auto plugged = recorded(LggrPntr_KRII);
  plugged->main->Let_MaxCommunicationRetries(2);
  plugged->bench.Dock->unplugAfterBytes(500);
  EXPECT_EQ(plugged->retrieve(), 10003);
  auto held = recorded(LggrPntr_KRII);
  held->main->Let_MaxCommunicationRetries(2);
  held->bench.Dock->Faults.Open = {8005, once()};
  EXPECT_EQ(held->retrieve(), 0);
}

/// A command that begins within ten seconds of another one's failure takes its first failure for the echo of
/// that: here a configuration with a bad checksum passes as one that says nothing, where it is read again
/// otherwise.
TEST(Retrieve, TheEchoOfAFailure) {
  for (const std::int32_t seconds : {1, 20}) {
    Workbench desk(LggrPntr_KRVivid);
    desk.logger().Faults.RefuseClock = once();
    desk.logger().clock().set(0);
    ASSERT_EQ(desk.configure(), 10025);
    desk.wait(std::chrono::seconds(seconds));
    desk.logger().Faults.BadConfigChecksum = once();
    EXPECT_EQ(desk.configure(), seconds < 10 ? 10009 : 0);
    EXPECT_EQ(desk.configure(), 0);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
