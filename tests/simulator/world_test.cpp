#include <gtest/gtest.h>

#include <filesystem>

#include "simulator/calendar.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

TEST(World, TimeMovesOnlyWhenToldAndInOrder) {
  SimulatedWorld world;
  std::string order;
  world.after(20ms, [&] { order += 'b'; });
  world.after(10ms, [&] {
    order += 'a';
    world.after(5ms, [&] { order += 'x'; });
    world.after(10ms, [&] { order += 'c'; });
  });
  world.clock().idle();
  EXPECT_NEAR(world.clock().timer(), 0.001, 1e-12);
  world.clock().sleep(19ms);
  EXPECT_EQ(order, "axbc");
  world.clock().sleep(0ms);
  EXPECT_NEAR(world.elapsed(), 0.020, 1e-12);
}

TEST(World, LocalTimeKnowsDaylight) {
  const struct {
    const char* Zone;
    std::int64_t Utc;
    int Day, Hour, Minute;
  } cases[] = {{"Eastern Standard Time", secondsOf(2026, 3, 8, 6, 59, 59), 8, 1, 59},
               {"Eastern Standard Time", secondsOf(2026, 3, 8, 7), 8, 3, 0},
               {"Eastern Standard Time", secondsOf(2026, 11, 1, 5, 59, 59), 1, 1, 59},
               {"Eastern Standard Time", secondsOf(2026, 11, 1, 6), 1, 1, 0},
               {"India Standard Time", secondsOf(2026, 6, 1, 20), 2, 1, 30},
               {"New Zealand Standard Time", secondsOf(2026, 1, 15, 12), 16, 1, 0},
               {"New Zealand Standard Time", secondsOf(2026, 7, 15, 12), 16, 0, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.Zone << " " << c.Utc);
    WorldOptions options;
    options.Zone = c.Zone;
    options.Begins = std::chrono::sys_seconds{std::chrono::seconds{c.Utc}};
    SimulatedWorld world{options};
    const CivilTime local = world.clock().local();
    EXPECT_EQ(local.Day, c.Day);
    EXPECT_EQ(local.Hour, c.Hour);
    EXPECT_EQ(local.Minute, c.Minute);
  }
}

TEST(World, ItsFolderGoesWithItAndFilesFailWhenTold) {
  std::string root;
  {
    SimulatedWorld world;
    root = world.rootFolder();
    const std::string file = world.environment().specialFolder(26) + "/note";
    world.files().write(file, "one");
    world.Faults.FileWrite = {28, once()};
    try {
      world.files().write(file, "two");
      ADD_FAILURE();
    } catch (const platform::SystemError& error) {
      EXPECT_EQ(error.Number, 28);
    }
    EXPECT_EQ(world.files().read(file), "one");
    EXPECT_TRUE(std::filesystem::exists(root));
  }
  EXPECT_FALSE(std::filesystem::exists(root));
}

TEST(World, SettingsIgnoreCaseAndKeepTheirNames) {
  MemorySettings settings;
  settings.write(1, "Software\\Wristlog", "Port", {4, {1, 0, 0, 0}});
  EXPECT_TRUE(settings.keyExists(1, "SOFTWARE"));
  EXPECT_FALSE(settings.keyExists(2, "Software"));
  EXPECT_EQ(settings.read(1, "software\\wristlog", "PORT")->Type, 4);
  EXPECT_EQ(settings.subkeys(1, "software"), std::vector<std::string>{"Wristlog"});
  EXPECT_EQ(settings.valueNames(1, "software\\wristlog"), std::vector<std::string>{"Port"});
  EXPECT_TRUE(settings.deleteValue(1, "Software\\Wristlog", "port"));
  EXPECT_FALSE(settings.deleteValue(1, "Software\\Wristlog", "port"));
  EXPECT_TRUE(settings.deleteKey(1, "Software"));
  EXPECT_FALSE(settings.keyExists(1, "Software\\Wristlog"));
}

}  // namespace
}  // namespace hy_wristlog::simulator
