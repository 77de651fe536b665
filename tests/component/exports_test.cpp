#include <dlfcn.h>

#include <cstdio>

#include "component_support.h"

#include "simulator/bench.h"
#include "support/scripted_world.h"
#include "support/surroundings.h"
#include "tools/Class_Registry.h"

namespace hy_wristlog::host {
namespace {

constexpr char Library[] = WRISTLOG_LIBRARY;

TEST(Exports, AreTheFourAndTheLibrarysOwnNames) {
  FILE* pipe = ::popen(("nm -D --defined-only -C '" + std::string(Library) + "'").c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  char line[4096];
  std::vector<std::string> others, exceptions;
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    std::string name = line;
    name = name.substr(name.find(' ') + 3);
    name.pop_back();
    EXPECT_EQ(name.find("::component::"), std::string::npos) << name;
    for (const char* made : {"typeinfo for ", "typeinfo name for ", "vtable for ", "VTT for ",
                             "guard variable for ", "non-virtual thunk to ", "virtual thunk to "})
      if (name.starts_with(made)) {
        if (name.ends_with("::Failure") || name.ends_with("::SystemError")) exceptions.push_back(name);
        name.erase(0, std::string(made).size());
      }
    if (!name.starts_with("hy_wristlog::")) others.push_back(name);
  }
  ::pclose(pipe);
  std::sort(others.begin(), others.end());
  EXPECT_EQ(others, (std::vector<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                              "DllUnregisterServer"}));
  for (const char* caught :
       {"typeinfo for hy_wristlog::Failure", "typeinfo for hy_wristlog::platform::SystemError"})
    EXPECT_EQ(std::count(exceptions.begin(), exceptions.end(), caught), 1) << caught;
}

/// The library as a host loads it.
TEST(Exports, ServeAHostThatLoadsTheLibrary) {
  void* library = ::dlopen(Library, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << ::dlerror();
  const auto getClass = reinterpret_cast<decltype(&DllGetClassObject)>(::dlsym(library, "DllGetClassObject"));
  const auto canUnload = reinterpret_cast<decltype(&DllCanUnloadNow)>(::dlsym(library, "DllCanUnloadNow"));
  ASSERT_TRUE(getClass != nullptr && canUnload != nullptr);
  void* made = nullptr;
  ASSERT_EQ(getClass(&HY_CLSID_SUBJECT, &HY_IID_CLASS_FACTORY, &made), HY_S_OK);
  {
    const Ref<HyClassFactory> factory(static_cast<HyClassFactory*>(made));
    ASSERT_EQ(factory->CreateInstance(factory.get(), nullptr, &HY_IID_DISPATCH, &made), HY_S_OK);
    const Ref<HyDispatch> subject(static_cast<HyDispatch*>(made));
    EXPECT_EQ(put(subject.get(), "Initials", text("AB")).Result, HY_S_OK);
    EXPECT_EQ(get(subject.get(), "Initials").text(), "AB");
    EXPECT_EQ(canUnload(), HY_S_FALSE);
  }
  EXPECT_EQ(canUnload(), HY_S_OK);
}

std::string setting(const std::string& key, const std::string& name = "") {
  Class_Registry registry;
  const auto value =
      registry.GetRegistrySetting(Class_Registry::ClassesRoot, key, name, 1, std::string("none"));
  return std::get<std::string>(value);
}

TEST(Registration, WritesTheClassesAndTakesThemBack) {
  const TemporaryFolder home;
  const Variable configuration("XDG_CONFIG_HOME", home.path());
  const InWorld<scripted::World> world;
  const std::pair<const char*, const char*> classes[] = {
      {"Class_Main", "{7857D1D2-118B-4FA4-BAB5-C02113E3AFD4}"},
      {"Class_VardenLogger", "{3A46E78C-E35A-4004-897D-391E0B1DA357}"},
      {"Class_Pendrel", "{F8482F2A-1519-4C5B-83A7-5B67441AABCA}"},
      {"Class_Subject", "{D273891E-E0F6-44A5-9B7F-196E7AE7171B}"}};
  auto& store = platform::current().settings();
  store.write(Class_Registry::ClassesRoot, "CLSID\\{other}", "", {1, {'x', 0}});
  const std::string before = contentOf(home / "HY_Wristlog/settings");
  for (int times = 0; times < 2; ++times) ASSERT_EQ(DllRegisterServer(), HY_S_OK);
  for (const auto& [name, id] : classes) {
    const std::string program = std::string("HY_Wristlog.") + name, key = std::string("CLSID\\") + id;
    EXPECT_EQ(setting(key), program);
    EXPECT_EQ(setting(key + "\\ProgID"), program);
    EXPECT_EQ(setting(program + "\\CLSID"), id);
    EXPECT_EQ(setting(key + "\\InprocServer32", "ThreadingModel"), "Apartment");
    const std::string file = setting(key + "\\InprocServer32");
    EXPECT_TRUE(file.starts_with("/") && file.ends_with("/libhy_wristlog.so.5")) << file;
  }
  ASSERT_EQ(DllUnregisterServer(), HY_S_OK);
  EXPECT_EQ(contentOf(home / "HY_Wristlog/settings"), before) << "others' classes stay";
  store.deleteKey(Class_Registry::ClassesRoot, "");
  DllRegisterServer();
  ASSERT_EQ(DllUnregisterServer(), HY_S_OK);
  EXPECT_EQ(contentOf(home / "HY_Wristlog/settings"), "");
  EXPECT_EQ(DllUnregisterServer(), HY_S_OK);
}

TEST(Registration, FailsWithTheStore) {
  const auto bench = simulator::makeVividBench();
  const simulator::BenchScope scope(bench);
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
