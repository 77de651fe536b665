#include <array>
#include <cerrno>

#include "tools/Class_Registry.h"
#include "tools/tools_test.h"

namespace hy_wristlog {
namespace {

using platform::LocaleItem;

constexpr const char* ComPorts = "{4D36E978-E325-11CE-BFC1-08002BE10318}";

TEST(Devices, PortOfTheOneMatchingDevice) {
  using Names = std::vector<std::pair<std::string, std::string>>;
  const char* match = "usb\\vid_5245&pid_4000&rev_0600";
  // Port, count, failing names.
  // clang-format off
  const std::tuple<Names, std::int16_t, std::int16_t, int> cases[] = {
      {{}, 0, 0, 0}, {{{match, "Dock (COM33)"}}, 33, 1, 0},
      {{{"USB\\VID_0001&PID_4000", "COM1"}, {match, "COM 7"}}, 7, 1, 0},
      {{{match, "Dock (COM33)"}, {match, "Dock (COM34)"}}, 0, 2, 0}, {{{match, "Communications Dock"}}, 0, 1, 0},
      {{{match, "COM99999"}}, 0, 1, 0}, {{{match, std::string("Dock\0(COM33)", 12)}}, 0, 1, 0},
      {{{"USB\\VID_0001&PID_5245_4000", "COM3"}}, 3, 1, 0},
      {{{std::string("USB\\VID_0001\0USB\\VID_5245&PID_4000", 34), "COM3"}}, 0, 0, 0}, {{{match, "COM3"}}, 3, 1, 2},
      {{{match, "COM3"}}, 0, 1, 3}};
  // clang-format on
  for (const auto& [devices, port, count, failing] : cases) {
    const InWorld<simulator::SimulatedWorld> world;
    for (const auto& [id, name] : devices) world->addDock({{}, 33, {}, id, name});
    world->Faults.FriendlyName.When = {0, failing};
    std::int16_t found = -1;
    EXPECT_EQ(Tools().fncUSBdeviceCOMport("5245", "4000", ComPorts, found), port);
    EXPECT_EQ(found, count);
    EXPECT_NEAR(world->elapsed(), failing > 0 ? 0.2 : 0, 1e-6);
  }
}

TEST_F(ToolsTest, EnumerationThatFails) {
  world_->addDock({});
  simulator::WorldFaults& faults = world_->Faults;
  const std::pair<simulator::SystemFault*, std::string> cases[] = {
      {&faults.DevicesOfClass, "Error getting device handle, call to 'SetupDiGetClassDevs', "},
      {&faults.HasInterface, "Error enumerating device info, call to 'SetupDiEnumDeviceInterfaces', "},
      {&faults.ReadInfo, "Error enumerating device info, call to 'SetupDiEnumDeviceInfo', "},
      {&faults.HardwareId, "Error getting reg property, call to 'SetupDiGetDeviceRegistryProperty', "}};
  std::int16_t count = 0;
  const auto port = [&] { return Tools().fncUSBdeviceCOMport("5245", "4000", ComPorts, count); };
  for (const auto& [fault, words] : cases) {
    *fault = {EIO, simulator::once()};
    EXPECT_EQ(failureOf(port),
              std::pair(EIO, words + "error number:5, error description: Input/output error"));
  }
  EXPECT_EQ(port(), 33);
}

TEST(Locale, FormatsAndTheirDefaults) {
  // Separator, long date, short date and time as they are given, and then the answers.
  const std::pair<std::array<const char*, 4>, std::array<const char*, 5>> cases[] = {
      {{"", "", "", ""}, {".", "dddd, MMMM dd, yyyy", "M/d/yyyy", "Hh:Nn:Ss", "Hh:Nn"}},
      {{",", "d' de 'MMMM", "d.M.", "h:mm:ss tt"}, {",", "d de MMMM", "d.M.", "h:mm:ss AMPM", "h:mm AMPM"}},
      {{".", "d", "d", "HH.mm.s"}, {".", "d", "d", "HH.mm.s", "HH.mm"}},
      {{".", "d", "d", "ss:HH"}, {".", "d", "d", "ss:HH", ":HH"}},
      {{".", "d", "d", "Hh時Nn分Ss秒"}, {".", "d", "d", "Hh時Nn分Ss秒", "Hh時Nn秒"}}};
  for (const auto& [given, answers] : cases) {
    simulator::WorldOptions options;
    for (std::size_t i = 0; i < 4; ++i) options.Locale[static_cast<LocaleItem>(i)] = given[i];
    const InWorld<simulator::SimulatedWorld> world{options};
    EXPECT_EQ(std::get<std::int16_t>(Tools().fncGetLocaleDecimalSeparator(true)), answers[0][0]);
    EXPECT_EQ(std::get<std::string>(Tools().fncGetLocaleDecimalSeparator()), answers[0]);
    EXPECT_EQ(Tools().fncGetLocaleLongDateFormat(), answers[1]);
    EXPECT_EQ(Tools().fncGetLocaleShortDateFormat(), answers[2]);
    EXPECT_EQ(Tools().fncGetLocaleTimeFormat(true), answers[3]);
    EXPECT_EQ(Tools().fncGetLocaleMediumTimeFormat(), answers[4]);
    std::size_t index = 0;
    for (const std::int32_t item : {14, 32, 31, 4099})
      EXPECT_EQ(Tools().fncGetUserLocaleInfo(1024, item), given[index++]);
    EXPECT_EQ(Tools().fncGetUserLocaleInfo(1024, 1), "");
  }
}

TEST(Registry, KeepsTypes) {
  simulator::WorldOptions options;
  options.Variables = {{"HOME", "/home/u"}};
  const InWorld<simulator::SimulatedWorld> world{options};
  platform::SettingsStore& store = world->settings();
  Class_Registry registry;
  // clang-format off
  const std::tuple<std::int32_t, RegistryValue, RegistryValue, Bytes> cases[] = {
      {1, "ab", "ab", {'a', 'b', 0}}, {1, 17, "17", {'1', '7', 0}},
      {2, "%HOME%/x%NO%%HOME%%", "/home/u/x%NO%/home/u%", bytesOf({"%HOME%/x%NO%%HOME%%", 20})},
      {3, Bytes{1, 0, 2}, Bytes{1, 0, 2}, {1, 0, 2}}, {4, -2, -2, {0xFE, 0xFF, 0xFF, 0xFF}},
      {4, "&H102", 0x102, {2, 1, 0, 0}}, {5, INT32_MIN + 0x010203, INT32_MIN + 0x010203, {0x80, 1, 2, 3}}};
  // clang-format on
  const auto root = Class_Registry::CurrentUser;
  for (const auto& [type, written, read, data] : cases) {
    registry.SetRegistrySetting(root, "Soft\\Key", "Name", written, type);
    EXPECT_EQ(store.read(root, "Soft\\Key", "Name")->Data, data);
    EXPECT_EQ(registry.GetRegistrySetting(root, "Soft\\Key", "Name", 1, {}), read);
  }
  const auto refusal = [&](std::int32_t type, const RegistryValue& value) {
    registry.ValueType = type;
    return numberOf([&] { registry.Let_Value(value); });
  };
  EXPECT_TRUE(refusal(1, Bytes{1}) == fault::TypeMismatch && refusal(4, "a") == fault::TypeMismatch);
  EXPECT_EQ(refusal(7, "x"), fault::InvalidCall);
  for (const platform::SettingValue& unusable : {platform::SettingValue{4, {1, 2}}, {7, {1, 2}}}) {
    store.write(0, "K", "V", unusable);
    EXPECT_EQ(registry.GetRegistrySetting(0, "K", "V", 4, "999"), RegistryValue("999"));
  }
}

TEST(Registry, TellsWhatTheStoreRefuses) {
  const InWorld<simulator::SimulatedWorld> world;
  Class_Registry registry;
  registry.SectionKey = "K";
  registry.ValueKey = "V";
  registry.Default = "d";
  const std::string denied = "Access denied when accessing Windows registry";
  const std::tuple<int, std::string, std::string> refusals[] = {
      {EPERM, denied, denied},
      {EIO, "Call to RegCreateKeyEx failed, returning error number: 5", "Input/output error"}};
  for (const auto& [error, creating, writing] : refusals) {
    world->memorySettings().WriteErrorNumber = error;
    EXPECT_EQ(failureOf([&] { registry.Let_Value("x"); }), std::pair(error, writing));
    world->memorySettings().ErrorNumber = error;
    EXPECT_EQ(failureOf([&] { registry.Let_Value("x"); }), std::pair(error, creating));
    EXPECT_EQ(registry.Get_Value(), RegistryValue("d"));
    EXPECT_FALSE(registry.Get_KeyExists() || registry.CreateKey() || registry.DeleteKey());
    world->memorySettings().ErrorNumber = 0;
  }
}

}  // namespace
}  // namespace hy_wristlog
