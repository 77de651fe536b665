#include <gtest/gtest.h>

#include "base/inside.h"
#include "errors/GlobalState.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

// clang-format off
Arrange setText(simulator::BlockField field, const char* text) {
  return [=](auto& desk) { desk.stored().setText(field, text); };
}
Arrange subjectBytes(std::size_t at, std::size_t count, char with) {
  return [=](auto& desk) {
    for (std::size_t i = 0; i < count; ++i) desk.stored().set({block::Subject.Offset + at + i, 1}, with);
  };
}
Arrange poke(std::size_t at, const std::vector<std::uint8_t>& bytes) {
  return [=](auto& d) {
    for (std::size_t i = 0; i < bytes.size(); ++i) d.logger().memory().write(at + i, bytes[i]);
  };
}
Arrange ended(std::int64_t secondsAgo = 0) {
  return [=](auto& desk) { desk.stored().set(block::StopTime, desk.bench.World->now() - secondsAgo); };
}
// clang-format on
const Arrange NoBirth = subjectBytes(101, 8, ' ');

TEST(Refusals, LeaveTheLoggerAsItIs) {
  const Arrange lightLost = all({set(block::GreenCalibration, 0), set(block::LightCalibration, 0)});
  const Arrange clockStuck = all({[](auto& d) { d.logger().clock().set(d.logger().clock().seconds() - 20); },
                                  fails(&LoggerFaults::RefuseClock)});
  constexpr std::int32_t Untried = -1;
  // clang-format off
  const std::tuple<Arrange, std::int32_t, std::int32_t> cases[] = {
      {SecondDock, 10020, 10020}, {NoDock, 10003, 10003}, {NoLogger, 10003, 10003}, {Silent, 10003, 10003},
      {OtherModel, 10009, 10009}, {set(block::Version, 9), 10009, 10009},
      {set(block::ActivityCalibration, 0), 10011, 10011}, {lightLost, 10011, Untried},
      {badConfig(), 11505, 11505}, {badLines(), 11507, 11507}, {Held, 11508, 11508},
      {openFails(8010), 8010, 8010}, {clockStuck, 10025, Untried},
      {[](auto& d) { d.logger().Faults.LoseEcho.Times = simulator::Fault::Always; }, 10003, Untried},
      {[](auto& d) { d.logger().Faults.Transfer.NakPacket = always(); }, 3011, Untried},
      {set(block::Mode, 0), 0, 10005},
      {set(block::Mode, 33), 0, 10005}, {set(block::EpochLength, 45), 0, 10006},
      {setText(block::ZoneStandardName, ""), 0, 10019}, {set(block::Counters, 1), 0, 10026},
      // The subject's version, gender, GUID, birth, weight and height.
      {subjectBytes(0, 1, 0), 0, 10014}, {subjectBytes(100, 1, '\\'), 0, 10014},
      {subjectBytes(68, 32, ' '), 0, 10014}, {NoBirth, 0, 10014}, {subjectBytes(109, 5, ' '), 0, 10014},
      {subjectBytes(114, 5, ' '), 0, 10014}, {all({set(block::Counters, 1), NoBirth}), 0, 10014},
  };
  // clang-format on
  for (const enmLoggerPointer model : Models) {
    for (const auto& row : cases) {
      const auto& [arrange, expected, retrieved] = row;
      SCOPED_TRACE(std::to_string(&row - cases) + " of model " + std::to_string(model));
      const auto configured = recorded(model);
      arrange(*configured);
      EXPECT_EQ(configured->configure(), expected);
      EXPECT_TRUE(configured->portClosed());
      EXPECT_EQ(configured->battery == -7, expected != 0);
      if (retrieved == Untried) continue;
      const auto desk = recorded(model);
      arrange(*desk);
      const auto size = desk->logger().recordedBytes().size();
      EXPECT_EQ(desk->retrieve(), retrieved);
      EXPECT_TRUE(desk->portClosed());
      EXPECT_EQ(desk->heard("acq stop 0"), 0U);
      EXPECT_GE(desk->logger().recordedBytes().size(), size);
      EXPECT_TRUE(desk->data != nullptr);
      const bool known = retrieved == 10026 || retrieved == 10019;
      EXPECT_EQ(desk->subject->Get_Identity(), known ? "Subject 17" : "Jane");
    }
    const auto special = recorded(model);  // activity and special light, which a Kestrin 2 does not have
    special->stored().set(block::Mode, 7);
    EXPECT_EQ(special->retrieve() == 10005, model == LggrPntr_KRII);
    Workbench fresh(model);
    fresh.logger().setUp(ordinarySetup(*fresh.bench.World, simulator::Mode::Activity, 30));
    EXPECT_EQ(fresh.retrieve(), 10027);
    EXPECT_EQ(fresh.retrieve(true), 10015);
    EXPECT_FALSE(fresh.logger().waiting());
    Workbench newer(model, optionsOf(model, "01.02.0000"));
    EXPECT_EQ(newer.configure(), 10010);
    EXPECT_EQ(newer.retrieve(true), 10010);
    newer.Model = static_cast<enmLoggerPointer>(3);
    EXPECT_EQ(newer.configure({.Mode = 0}), 10009);
    EXPECT_EQ(newer.retrieve(), 10009);
    EXPECT_EQ(newer.status(), 10009);
  }
}

TEST(Retrieve, AGoodOne) {
  for (const enmLoggerPointer model : Models) {
    const auto desk = recorded(model);
    const std::int64_t before = desk->bench.World->now();
    desk->main->AbortComms();
    EXPECT_EQ(desk->retrieve(), 0);
    EXPECT_EQ(desk->result, Decode_OK);
    EXPECT_FALSE(desk->lowBattery);
    EXPECT_NEAR(desk->data->Get_Samples(), 39, 1);
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
    EXPECT_FALSE(globals().ErrorStack.at(0).has_value());
  }
  const auto over = recorded(LggrPntr_KRVivid);  // keeps its end
  ended(300)(*over);
  const std::int64_t stop = over->stored().signedNumber(block::StopTime);
  EXPECT_EQ(over->retrieve(), 0);
  EXPECT_EQ(over->stored().signedNumber(block::StopTime), stop);
}

TEST(Retrieve, WarningsThatAreIgnored) {
  const Arrange future = [](auto& desk) {
    set(block::DataAvailable, 0)(desk);
    desk.stored().set(block::StartTime, desk.bench.World->now() + 90);
  };
  const Arrange resets = set(block::Counters, 1), lost = set(block::ZoneBias, 123);
  const std::tuple<Arrange, std::int32_t, std::int32_t> cases[] = {
      {NoBirth, 10014, 10014},
      {all({resets, NoBirth}), 10014, 10026},
      {setText(block::ZoneStandardName, "IND"), 10028, 10028},  // another one of the same bias
      {setText(block::ZoneStandardName, "UNK"), 10028, 10028},
      {all({resets, lost}), 10026, 10028},
      {future, 10027, 0},
      {all({future, resets}), 10027, 10026},
  };
  for (const enmLoggerPointer model : Models)
    for (const auto& [arrange, warned, code] : cases) {
      const auto desk = recorded(model);
      arrange(*desk);
      EXPECT_EQ(desk->retrieve(), warned);
      EXPECT_EQ(desk->heard("show data"), 0U);
      desk->wait(11s);
      EXPECT_EQ(desk->retrieve(true), code);
      EXPECT_NEAR(desk->data->Get_Samples(), 39, 2);
      EXPECT_EQ(desk->stored().number(block::DataAvailable), 0U);
      if (code != 10028) continue;
      // The zone taken for the stranger's.
      EXPECT_EQ(desk->data->Get_TZstandardAbbrev().size(), 3U);
      EXPECT_EQ(Inside::of(*desk->data).record.TZbias, Inside::of(*desk->data).record.TimeZone->Bias);
    }
}

TEST(Retrieve, VerdictsOfTheDecoder) {
  const Arrange half = all({ended(), [](auto& desk) { desk.wait(40s); }, set(block::NextAddress, 3)});
  constexpr auto NoVerdict = static_cast<enmDecodeResult>(99);
  const std::tuple<Arrange, enmDecodeResult, std::int32_t, bool> cases[] = {
      {half, Decode_OK, 10029, false},
      {poke(0, {1}), Decode_NonEventDataOutsideAcquisition, 10030, false},
      {poke(40, {253, 0}), Decode_EventDecodingError, 10030, true},
      {poke(30, {253, 4, 0, 0, 0, 0, 105}), Decode_MemoryFull, 0, true},
      {set(block::StartTime, -900), NoVerdict, 11503, false},
  };
  for (const enmLoggerPointer model : Models) {
    for (const auto& [arrange, result, code, clears] : cases)
      for (const bool ignore : {false, true}) {
        SCOPED_TRACE(result);
        const auto desk = recorded(model);
        arrange(*desk);
        desk->result = NoVerdict;
        EXPECT_EQ(desk->retrieve(ignore), code);
        EXPECT_EQ(desk->result, result);
        EXPECT_EQ(desk->stored().number(block::DataAvailable) == 0, clears && (ignore || code == 0));
        EXPECT_TRUE(desk->portClosed());
      }
    // A recording that lay in its logger for more than a month is told, but not kept from the host.
    const auto old = recorded(model);
    ended()(*old);
    old->wait(31 * 24h);
    const bool vivid = model == LggrPntr_KRVivid;
    EXPECT_EQ(old->retrieve(), vivid ? 10030 : 0);
    EXPECT_EQ(old->result, vivid ? Decode_TooLongSinceLastAcqStop : Decode_OK);
    EXPECT_NEAR(old->data->Get_Samples(), 39, 1);
    EXPECT_EQ(old->stored().number(block::DataAvailable), 0U);
  }
}

TEST(Retrieve, LowBattery) {
  const std::tuple<double, double, bool, bool> cases[] = {
      {2.9, 2.9, false, false}, {2.899, 2.899, false, true}, {3.0, 2.8, true, false}};
  for (const auto& [first, second, vivid, kestrin2] : cases)
    for (const enmLoggerPointer model : Models) {
      const auto desk = recorded(model);
      desk->logger().battery().setVoltages(first, second);
      EXPECT_EQ(desk->retrieve(), 0);
      EXPECT_EQ(desk->lowBattery, model == LggrPntr_KRVivid ? vivid : kestrin2) << first << ", " << second;
    }
  // Told by the recording alone.
  simulator::WearOptions wear;
  wear.Happenings = {{.After = 10min, .What = simulator::Happening::Kind::BatteryLow}};
  const auto desk = recorded(LggrPntr_KRVivid, 20min, wear);
  desk->logger().battery().setVoltages(3.0, 3.0);
  EXPECT_EQ(desk->retrieve(), 0);
  EXPECT_TRUE(desk->lowBattery);
}

TEST(Retrieve, Attempts) {
  for (const std::int32_t bad : {3, 4, 6}) {  // sent configurations; two of them spoil an attempt
    const auto desk = recorded(LggrPntr_KRVivid);
    desk->main->Let_MaxCommunicationRetries(3);
    desk->logger().Faults.BadConfigChecksum = {0, bad};
    EXPECT_EQ(desk->retrieve(), bad == 6 ? 11505 : 0);
    EXPECT_EQ(desk->heard("show config"), bad == 6 ? 6U : static_cast<std::size_t>(bad) + 2);
  }
  // Another attempt begins at the dock; what a host is told is what the last one found.
  for (const bool unplugged : {true, false}) {
    const auto desk = recorded(LggrPntr_KRII);
    desk->main->Let_MaxCommunicationRetries(2);
    unplugged ? desk->bench.Dock->unplugAfterBytes(500) : openFails(8005, once())(*desk);
    EXPECT_EQ(desk->retrieve(), unplugged ? 10003 : 0);
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
