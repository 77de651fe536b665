#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/linux_platform.h"
#include "simulator/simulated_world.h"
#include "support/in_world.h"
#include "support/surroundings.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::int32_t User = INT32_MIN + 1, Machine = INT32_MIN + 2;
using Names = std::vector<std::string>;

TEST(SettingsStore, KeepsWhatWasWritten) {
  const TemporaryFolder home;
  const Variable config{"XDG_CONFIG_HOME", home / "a/config"};
  const auto world = makeLinuxPlatform();
  SettingsStore& store = world->settings();
  EXPECT_FALSE(store.keyExists(Machine, "Software\\Ward") || store.deleteKey(Machine, "Software\\Ward"));
  EXPECT_THROW(store.valueNames(Machine, "Software\\Ward"), SystemError);
  EXPECT_EQ(store.subkeys(Machine, ""), Names{});
  store.write(Machine, "Software\\Ward", "Flag", {4, {1, 0, 0, 0}});
  store.write(Machine, "\\software\\WARD\\", "flag", {3, {0, 9, 255}});
  store.write(Machine, "Software\\Ward", "", {1, {}});
  store.write(Machine, "Software\\Ward\\Bed 1", "tab\tline\n100%", {2, {'%', 'X', '%'}});
  store.createKey(Machine, "Software\\Wards");
  store.createKey(User, "Software");

  const auto other = makeLinuxPlatform();
  SettingsStore& seen = other->settings();
  EXPECT_EQ(seen.read(Machine, "SOFTWARE\\ward", "FLAG")->Data, (std::vector<std::uint8_t>{0, 9, 255}));
  EXPECT_EQ(seen.read(Machine, "Software\\Ward", "Flag")->Type, 3);
  EXPECT_EQ(seen.read(Machine, "Software\\Ward\\Bed 1", "tab\tline\n100%")->Type, 2);
  EXPECT_FALSE(seen.read(User, "Software\\Ward", "Flag"));
  EXPECT_EQ(seen.valueNames(Machine, "Software\\Ward"), (Names{"", "Flag"}));
  EXPECT_EQ(seen.subkeys(Machine, "Software"), (Names{"Ward", "Wards"}));
  EXPECT_FALSE(seen.deleteValue(Machine, "Software\\Ward", "Flags"));
  EXPECT_TRUE(seen.deleteValue(Machine, "Software\\Ward", "FLAG"));
  EXPECT_TRUE(seen.deleteKey(Machine, "software\\ward"));
  EXPECT_FALSE(store.keyExists(Machine, "Software\\Ward\\Bed 1"));
  EXPECT_TRUE(store.keyExists(Machine, "Software\\Wards") && store.keyExists(User, "Software"));
}

TEST(SettingsStore, ProcessesThatWriteAtOnceLoseNothing) {
  constexpr int Processes = 8, Writes = 10;
  const TemporaryFolder home;
  const Variable config{"XDG_CONFIG_HOME", home.path()};
  const std::string ini = home / "shared.ini";
  std::vector<pid_t> children;
  for (int process = 0; process < Processes; ++process) {
    children.push_back(::fork());
    if (children.back() != 0) continue;
    const auto world = makeLinuxPlatform();
    bool written = true;
    for (int i = 0; i < Writes; ++i) {
      const std::string key = std::to_string(process * Writes + i);
      world->settings().write(Machine, "A", key, {1, {}});
      written = Class_Tools::fncINIwrite("A", key, "1", ini) && written;
    }
    ::_exit(written ? 0 : 1);
  }
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_TRUE(::waitpid(child, &status, 0) == child && status == 0);
  }
  const auto world = makeLinuxPlatform();
  EXPECT_EQ(world->settings().valueNames(Machine, "A").size(), std::size_t{Processes * Writes});
  for (int i = 0; i < Processes * Writes; ++i)
    EXPECT_EQ(Class_Tools::fncINIread("A", std::to_string(i), "", ini), "1") << i;
}

TEST(SettingsStore, WaitsForAnotherHolderButNotForEver) {
  const TemporaryFolder home;
  const Variable config{"XDG_CONFIG_HOME", home.path()};
  const auto world = makeLinuxPlatform();
  world->settings().createKey(Machine, "A");
  const auto held = world->files().tryLockFolder(home / "HY_Wristlog");
  const InWorld<simulator::SimulatedWorld> inSimulatedTime;
  EXPECT_TRUE(world->settings().keyExists(Machine, "A"));
  EXPECT_THROW(world->settings().createKey(Machine, "B"), SystemError);
  EXPECT_NEAR(inSimulatedTime->elapsed(), 5, 0.5);
}

TEST(SettingsStore, DamagedLinesAreLeftOut) {
  const TemporaryFolder home;
  const Variable config{"XDG_CONFIG_HOME", home.path()};
  home.put("HY_Wristlog/settings",
           "80000002\\A\tgood\t4\t01000000\n"
           "80000002\\A\tno type\t\t01\n80000002\\A\todd\t3\t012\n80000002\\A\tno hex\t3\t0g\n"
           "80000002\\A\tshort\n8000002\\B\tx\t1\t\n80000002B\tx\t1\t\n80000002\\\\B\tx\t1\t\n"
           "80000002\\A\tcut%4\t1\t\n80000002\\A\ttype\t99999999999\t\n80000002\\A\ttabs\t1\t00\t00\n"
           "\n\t\t\t\n80000002\\C\\D\n80000002\\A\tlast\t1\t4100");
  const auto world = makeLinuxPlatform();
  SettingsStore& store = world->settings();
  EXPECT_EQ(store.valueNames(Machine, "A"), (Names{"good", "last"}));
  EXPECT_EQ(store.subkeys(Machine, ""), (Names{"A", "C"}));
}

}  // namespace
}  // namespace hy_wristlog::platform
