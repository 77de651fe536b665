#include "engineering/saved_recording.h"
#include "engineering/files.h"

#include <gtest/gtest.h>

#include "base/inside.h"
#include "support/failures.h"
#include "support/surroundings.h"
#include "timezones/Class_TimeZoneTools.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

void wear(Workbench& desk) {
  desk.logger().setUp(ordinarySetup(*desk.bench.World, simulator::Mode::Activity, 30));
  desk.logger().wear(10h);
}

constexpr std::array<std::uint8_t, 7> ResetMark{253, 8, 0, 1, 0, 0, 0};

TEST(SavedRecording, HasEveryByteThatCameAndTellsWhenTheyAreNotTheLoggers) {
  // How many bytes more than the logger holds are sent; whether it has resets; whether that is the whole.
  const std::tuple<std::int64_t, bool, bool> cases[] = {
      {0, false, true}, {0, true, true}, {-600, false, false}, {500, false, false}, {2048, false, false}};
  for (const auto& [more, resets, whole] : cases) {
    SCOPED_TRACE(std::to_string(more) + (resets ? ", resets" : ""));
    Workbench desk(LggrPntr_KRVivid);
    wear(desk);
    if (resets) desk.stored().set(block::Counters, 1);
    for (std::size_t i = 0; resets && i < ResetMark.size(); ++i)
      for (const std::size_t mark : {100U, 200U}) desk.logger().memory().write(mark + i, ResetMark[i]);
    std::int64_t held = 0;
    desk.host->EachRound = [&, more = more] {
      if (held != 0 || desk.heard("show battery") < 2) return;
      held = desk.stored().number(block::NextAddress);
      desk.stored().set(block::NextAddress, held + more);
    };
    const std::int32_t code = desk.retrieve(true);
    const auto saved = engineering::savedRecording(*desk.data, false);
    ASSERT_GT(held, 1200);
    EXPECT_EQ(saved.bytesInLogger(), held);
    EXPECT_EQ(std::ssize(saved.Raw) == held, whole);
    const bool sound = whole || more < 0;
    EXPECT_EQ(saved.isPart(), more < 0);
    EXPECT_EQ(saved.mismatch().empty(), sound) << saved.mismatch();
    EXPECT_TRUE(whole || code == 9) << code;
    EXPECT_TRUE(whole || desk.stored().number(block::DataAvailable) != 0);
    EXPECT_EQ(saved.mismatch().find(std::to_string(held)) == std::string::npos, sound);
    const auto kept = desk.logger().memory().first(static_cast<std::size_t>(held));
    EXPECT_TRUE(!whole || std::ranges::equal(saved.Raw, kept));
  }
}

/// So that values that are not there compare equal.
TextSeries textsOf(const LightSeries& series) {
  TextSeries texts;
  for (const float value : series) texts.push_back(std::to_string(value));
  return texts;
}

/// Whether the shorter of both is how the longer one begins.
template <class Series>
bool isBeginningOf(const Series& part, const Series& whole) {
  return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

/// A recording of activity and light that is over, so that its bytes do not change any more.
std::unique_ptr<Workbench> wornToTheEnd(enmLoggerPointer model) {
  auto made = std::make_unique<Workbench>(model);
  auto& logger = made->logger();
  logger.setUp(ordinarySetup(*made->bench.World, simulator::Mode::ActivityAndStandardLight, 30));
  logger.wear(8h);
  made->stored().set(block::StopTime, made->bench.World->now());
  made->wait(31s);
  made->bench.line().resetTraffic();
  return made;
}

void expectBeginning(Workbench& desk, Class_VardenLogger& whole) {
  Class_VardenLogger& data = *desk.data;
  const ByteSeries raw = data.Get_RawData();
  EXPECT_TRUE(isBeginningOf(raw, whole.Get_RawData()));
  EXPECT_EQ(data.Get_RawDataIsPart(), !raw.empty() && raw.size() < whole.Get_RawData().size());
  if (raw.empty()) return;
  EXPECT_GE(data.Get_RetrieveStep(), RetrieveStep_Downloading);
  EXPECT_EQ(data.Get_BytesInLogger(), whole.Get_BytesInLogger());
  EXPECT_EQ(data.Get_ConfigBlock(), whole.Get_ConfigBlock());
  EXPECT_EQ(engineering::savedRecording(data, false).mismatch(), "");
  Class_VardenLogger decoded;
  EXPECT_EQ(decoded.DecodeRecording(data.Get_ConfigBlock(), raw), Decode_OK);
  EXPECT_EQ(decoded.Get_RawDataIsPart(), data.Get_RawDataIsPart());
  EXPECT_GT(decoded.Get_Samples(), 10);
  EXPECT_TRUE(isBeginningOf(decoded.Get_ActivityArray(), whole.Get_ActivityArray()));
  EXPECT_TRUE(isBeginningOf(textsOf(decoded.Get_RedLightArray()), textsOf(whole.Get_RedLightArray())));
  EXPECT_TRUE(isBeginningOf(decoded.Get_WristStatusArray(), whole.Get_WristStatusArray()));
  EXPECT_TRUE(isBeginningOf(decoded.Get_EventTexts(), whole.Get_EventTexts()));
  EXPECT_TRUE(isBeginningOf(decoded.Get_EventTimes(), whole.Get_EventTimes()));
}

TEST(SavedRecording, OfABrokenDownloadIsTheBeginningOfTheWhole) {
  void (*const breaks[])(Workbench&, std::uint64_t) = {
      [](Workbench& desk, std::uint64_t at) { desk.bench.line().Faults.CutAfterTotal = at; },
      [](Workbench& desk, std::uint64_t at) { desk.bench.Dock->unplugAfterBytes(at); },
      [](Workbench& desk, std::uint64_t at) {
        desk.bench.line().Faults.ActAfterTotal = at;
        desk.bench.line().Faults.Action = [&desk] { desk.host->AbortIn = desk.host->Rounds + 1; };
      }};
  for (const enmLoggerPointer model : Models) {
    const auto good = wornToTheEnd(model);
    ASSERT_EQ(good->retrieve(), 0);
    EXPECT_EQ(good->data->Get_RetrieveStep(), RetrieveStep_Done);
    EXPECT_FALSE(good->data->Get_RawDataIsPart());
    const std::uint64_t all = good->bench.line().traffic().total();
    std::size_t parts = 0, tried = 0;
    for (std::uint64_t at = 1; at < all; at += 331, ++tried) {
      SCOPED_TRACE(std::to_string(at) + " of model " + std::to_string(model));
      const auto desk = wornToTheEnd(model);
      desk->main->Let_WakeOnInput(tried % 2 == 0);
      breaks[tried % std::size(breaks)](*desk, at);
      desk->retrieve();
      expectBeginning(*desk, *good->data);
      parts += desk->data->Get_RawDataIsPart() ? 1 : 0;
    }
    EXPECT_GE(parts, tried / 2);

    // The second attempt brings less than the first, and the third finds no dock.
    const auto desk = wornToTheEnd(model);
    desk->main->Let_MaxCommunicationRetries(3);
    std::size_t first = 0, begins = 0;
    auto& faults = desk->bench.line().Faults;
    faults.CutAfterTotal = all * 9 / 10;
    faults.CutEndsOnReopen = true;
    desk->host->EachRound = [&] {
      const std::size_t downloads = desk->heard("show data"), came = desk->bench.line().traffic().BytesToPc;
      if (downloads == 1) first = std::max(first, static_cast<std::size_t>(desk->host->Downloaded));
      if (downloads < 2) begins = came;
      if (came > begins + 1200 && desk->bench.Dock->plugged()) desk->bench.Dock->unplug();
    };
    EXPECT_EQ(desk->retrieve(), ReturnCode::NotFound);
    EXPECT_EQ(desk->data->Get_RawData().size(), first);
    expectBeginning(*desk, *good->data);
    // A packet is missing in what came.
    const auto gap = wornToTheEnd(model);
    gap->logger().Faults.Transfer.MisnumberPacket = once(2);
    faults = {};
    gap->bench.line().Faults.CutAfterTotal = all * 2 / 3;
    gap->retrieve();
    EXPECT_LE(gap->data->Get_RawData().size(), 2048U);
    expectBeginning(*gap, *good->data);
  }
}

TEST(SavedRecording, KeepsWhatAnOlderBlockLacks) {
  const TemporaryFolder folder;
  Workbench desk(LggrPntr_KRVivid, optionsOf(LggrPntr_KRVivid, "00.01.0029"));
  wear(desk);
  ASSERT_EQ(desk.stored().number(block::Version), 1);
  ASSERT_EQ(desk.retrieve(), 0);
  const auto saved = engineering::savedRecording(*desk.data, false);
  const std::string raw = folder.put("raw.bin", std::string(saved.Raw.begin(), saved.Raw.end())),
                    config = folder.put("config.ini", saved.Ini);
  const auto logger = engineering::loggerFromIni(config);
  engineering::saveConfigIni(*logger, folder / "exported.ini", config);
  const auto edited = engineering::withEditedConfig(*logger, folder / "exported.ini");
  engineering::saveConfigIni(*edited, folder / "imported.ini", config);
  for (const char* name : {"config.ini", "exported.ini", "imported.ini"}) {
    SCOPED_TRACE(name);
    const auto again = engineering::savedRecording(folder / name, raw);
    EXPECT_EQ(again.Ini, saved.Ini);
    EXPECT_EQ(again.mismatch(), "");
    const auto opened = engineering::openRecording(again);
    EXPECT_EQ(opened->Get_FirmwareVersion(), "00.01.0029");
    EXPECT_EQ(opened->Get_BatteryVoltage(), desk.data->Get_BatteryVoltage());
    bool low = false;
    EXPECT_EQ(engineering::decode(*opened, false, low), Decode_OK);
    EXPECT_EQ(opened->Get_ActivityArray(), desk.data->Get_ActivityArray());
  }
  Class_VardenLogger decoded;
  const auto number = [&](const ByteSeries& block, const ByteSeries& bytes, const char* firmware) {
    return numberOf([&] { decoded.DecodeRecording(block, bytes, firmware); });
  };
  const ByteSeries block = desk.data->Get_ConfigBlock();
  EXPECT_EQ(number(block, saved.Raw, "00.01.0029"), 0);
  EXPECT_EQ(decoded.Get_ActivityArray(), desk.data->Get_ActivityArray());
  const double retrieved = Class_TimeZoneTools::fncGetGMTTime();
  desk.wait(40 * 24h);
  EXPECT_EQ(decoded.DecodeRecording(block, saved.Raw, "00.01.0029"), Decode_TooLongSinceLastAcqStop);
  EXPECT_EQ(decoded.DecodeRecording(block, saved.Raw, "00.01.0029", nullptr, false, retrieved), Decode_OK);
  EXPECT_EQ(number(block, saved.Raw, ""), FailureNumber::OutOfRange);
  EXPECT_EQ(number(block, {}, "00.01.0029"), FailureNumber::OutOfRange);
  EXPECT_EQ(number({}, saved.Raw, "00.01.0029"), FailureNumber::OutOfRange);
  EXPECT_EQ(number({block.begin(), block.end() - 1}, saved.Raw, ""), FailureNumber::DamagedConfig);
  Inside::of(decoded).link().subOpenPort(33, 13, 8, 3, 3, 0, false, true);
  EXPECT_EQ(number(block, saved.Raw, "00.01.0029"), FailureNumber::InvalidCall);
}

}  // namespace
}  // namespace hy_wristlog::workbench
