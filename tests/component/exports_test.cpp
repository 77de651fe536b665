#include <cstdio>
#include <map>
#include <set>

#include "component_support.h"

#include "simulator/bench.h"
#include "support/scripted_world.h"
#include "support/surroundings.h"
#include "tools/Class_Registry.h"

namespace hy_wristlog::host {
namespace {

constexpr char Library[] = WRISTLOG_LIBRARY;

using Names = std::map<std::string, std::set<std::string>>;

/// Everything that the library may export, by version. A class stands for what it is made of.
const Names Allowed = {{"HY_WRISTLOG_5",
                        {"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer",
                         "Class_Main", "Class_VardenLogger", "Class_Pendrel", "Class_Subject", "Failure",
                         "Host", "LoggerEvents", "dockInUse", "docks", "setHost", "useAllDocks", "useDock"}},
                       {"HY_WRISTLOG_PRIVATE",
                        {"platform::current", "platform::makeLinuxPlatform", "platform::use",
                         "platform::NewFile::add", "platform::NewFile::finish"}}};

TEST(Exports, AreThePublicClassesAndFunctionsAlone) {
  FILE* pipe = ::popen(("nm -D --defined-only -C '" + std::string(Library) + "'").c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  Names found;
  char line[4096];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    std::string name = std::string(line).substr(19);  // after address and kind
    const std::string version = name.substr(std::min(name.size(), name.find('@')));
    if (name.starts_with("HY_WRISTLOG_")) continue;  // the name of the version itself
    name.erase(name.size() - version.size());
    if (name.starts_with("typeinfo ") || name.starts_with("vtable ")) name.erase(0, name.find(" for ") + 5);
    if (name.starts_with("hy_wristlog::")) name.erase(0, 13);
    name.erase(std::min(name.size(), name.find_first_of("([")));
    if (version == "@@HY_WRISTLOG_5\n") name.erase(std::min(name.size(), name.find("::")));
    found[version.substr(2, version.size() - 3)].insert(name);
  }
  ::pclose(pipe);
  EXPECT_EQ(found, Allowed);
}

TEST(Registration, WritesTheClassesAndTakesThemBack) {
  const TemporaryFolder home;
  const Variable configuration("XDG_CONFIG_HOME", home.path());
  const InWorld<scripted::World> world;
  const auto setting = [](const std::string& key, const std::string& name = "") {
    return std::get<std::string>(
        Class_Registry().GetRegistrySetting(Class_Registry::ClassesRoot, key, name, 1, std::string("none")));
  };
  auto& store = platform::current().settings();
  store.write(Class_Registry::ClassesRoot, "CLSID\\{other}", "", {1, {'x', 0}});
  const std::string before = contentOf(home / "HY_Wristlog/settings");
  for (int times = 0; times < 2; ++times) ASSERT_EQ(DllRegisterServer(), HY_S_OK);
  for (const auto& [name, id] : {std::pair<const char*, const char*>{
                                     "HY_Wristlog.Class_Main", "{7857D1D2-118B-4FA4-BAB5-C02113E3AFD4}"},
                                 {"HY_Wristlog.Class_VardenLogger", "{3A46E78C-E35A-4004-897D-391E0B1DA357}"},
                                 {"HY_Wristlog.Class_Pendrel", "{F8482F2A-1519-4C5B-83A7-5B67441AABCA}"},
                                 {"HY_Wristlog.Class_Subject", "{D273891E-E0F6-44A5-9B7F-196E7AE7171B}"}}) {
    const std::string key = std::string("CLSID\\") + id;
    EXPECT_EQ(setting(key), name);
    EXPECT_EQ(setting(key + "\\ProgID"), name);
    EXPECT_EQ(setting(name + std::string("\\CLSID")), id);
    EXPECT_EQ(setting(key + "\\InprocServer32", "ThreadingModel"), "Apartment");
    EXPECT_TRUE(setting(key + "\\InprocServer32").ends_with("/libhy_wristlog.so.5"));
  }
  for (int times = 0; times < 2; ++times) ASSERT_EQ(DllUnregisterServer(), HY_S_OK);
  EXPECT_EQ(contentOf(home / "HY_Wristlog/settings"), before) << "others' classes stay";
}

TEST(Registration, FailsWithTheStore) {
  const auto bench = simulator::makeVividBench();
  const platform::WorldScope scope(bench.World);
  auto& store = bench.World->memorySettings();
  store.WriteErrorNumber = 13;
  EXPECT_EQ(DllRegisterServer(), HY_SELFREG_E_CLASS);
  store.WriteErrorNumber = 0;
  EXPECT_FALSE(store.keyExists(Class_Registry::ClassesRoot, "CLSID"));
  store.ErrorNumber = 13;
  EXPECT_EQ(DllUnregisterServer(), HY_SELFREG_E_CLASS);
}

}  // namespace
}  // namespace hy_wristlog::host
