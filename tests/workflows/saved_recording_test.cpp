#include "engineering/saved_recording.h"
#include "engineering/files.h"

#include <gtest/gtest.h>

#include "support/surroundings.h"
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
    EXPECT_EQ(saved.mismatch().empty(), whole) << saved.mismatch();
    EXPECT_TRUE(whole || code == 9) << code;
    EXPECT_TRUE(whole || desk.stored().number(block::DataAvailable) != 0);
    EXPECT_EQ(saved.mismatch().find(std::to_string(held)) == std::string::npos, whole);
    const auto kept = desk.logger().memory().first(static_cast<std::size_t>(held));
    EXPECT_TRUE(!whole || std::ranges::equal(saved.Raw, kept));
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
}

}  // namespace
}  // namespace hy_wristlog::workbench
