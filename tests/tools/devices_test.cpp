#include <gtest/gtest.h>

#include "fake_world.h"
#include "tools/Class_Registry.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

using platform::LocaleItem;
using Bytes = std::vector<std::uint8_t>;

class DevicesTest : public testing::Test {
 protected:
  fake::InWorld world_;
};

constexpr const char* Match = "usb\\vid_5245&pid_4000&rev_0600";

TEST_F(DevicesTest, PortOfTheOneMatchingDevice) {
  const struct {
    std::vector<fake::Device> Devices;
    std::int16_t Port, Count;
    int NamesRead;
    double Waited;
  } cases[] = {
      {{}, 0, 0, 0, 0},
      {{{Match, "Dock (COM33)"}}, 33, 1, 1, 0},
      {{{"USB\\VID_0001&PID_4000", "COM1"}, {Match, "COM 7"}}, 7, 1, 1, 0},
      {{{Match, "Dock (COM33)"}, {Match, "Dock (COM34)"}}, 0, 2, 1, 0},
      {{{Match, "Communications Dock"}}, 0, 1, 1, 0},
      {{{Match, "COM"}}, 0, 1, 1, 0},
      {{{Match, "COM99999"}}, 0, 1, 1, 0},
      {{{Match, std::string("Dock\0(COM33)", 12)}}, 0, 1, 1, 0},
      {{{"USB\\VID_0001&PID_5245_4000", "COM3"}}, 3, 1, 1, 0},
      {{{std::string("USB\\VID_0001\0USB\\VID_5245&PID_4000", 34), "COM3"}}, 0, 0, 0, 0},
      {{{Match, "COM3", 2}}, 3, 1, 3, 0.2},
      {{{Match, "COM3", 3}}, 0, 1, 3, 0.2},
  };
  for (const auto& c : cases) {
    world_->Tree.Devices = c.Devices;
    world_->Tree.NamesRead = 0;
    const double start = world_->TheClock.Now;
    std::int16_t count = -1;
    EXPECT_EQ(Tools().fncUSBdeviceCOMport("5245", "4000", "{class}", count), c.Port)
        << testing::PrintToString(c.Count);
    EXPECT_EQ(count, c.Count);
    EXPECT_EQ(world_->Tree.NamesRead, c.NamesRead);
    EXPECT_NEAR(world_->TheClock.Now - start, c.Waited, 1e-6);
  }
  EXPECT_EQ(world_->Tree.LastClass, "{class}");
}

TEST_F(DevicesTest, EnumerationThatFails) {
  world_->Tree.Devices = {{Match, "COM3"}};
  const std::pair<const char*, const char*> cases[] = {
      {"devicesOfClass", "Error getting device handle, call to 'SetupDiGetClassDevs', "},
      {"hasInterface", "Error enumerating device info, call to 'SetupDiEnumDeviceInterfaces', "},
      {"readInfo", "Error enumerating device info, call to 'SetupDiEnumDeviceInfo', "},
      {"hardwareId", "Error getting reg property, call to 'SetupDiGetDeviceRegistryProperty', "}};
  for (const auto& [call, words] : cases) {
    world_->Tree.FailingCall = call;
    std::int16_t count = 0;
    EXPECT_EQ(fake::failureOf([&] { Tools().fncUSBdeviceCOMport("5245", "4000", "{c}", count); }),
              std::pair(EIO, words + std::string("error number:5, error description: words for 5")));
  }
}

TEST_F(DevicesTest, LocaleFormatsAndTheirDefaults) {
  EXPECT_EQ(std::get<std::string>(Tools().fncGetLocaleDecimalSeparator()), ".");
  EXPECT_EQ(std::get<std::int16_t>(Tools().fncGetLocaleDecimalSeparator(true)), '.');
  EXPECT_EQ(Tools().fncGetLocaleLongDateFormat(), "dddd, MMMM dd, yyyy");
  EXPECT_EQ(Tools().fncGetLocaleShortDateFormat(), "M/d/yyyy");
  EXPECT_EQ(Tools().fncGetLocaleTimeFormat(true), "Hh:Nn:Ss");
  EXPECT_EQ(Tools().fncGetLocaleMediumTimeFormat(), "Hh:Nn");

  auto& locale = world_->TheEnvironment.Locale;
  locale = {{LocaleItem::DecimalSeparator, ","},
            {LocaleItem::LongDate, "dddd, d' de 'MMMM' de 'yyyy"},
            {LocaleItem::ShortDate, "dd.MM.yyyy"}};
  EXPECT_EQ(std::get<std::int16_t>(Tools().fncGetLocaleDecimalSeparator(true)), ',');
  EXPECT_EQ(Tools().fncGetLocaleLongDateFormat(), "dddd, d de MMMM de yyyy");
  EXPECT_EQ(Tools().fncGetUserLocaleInfo(1024, 31), "dd.MM.yyyy");
  EXPECT_EQ(Tools().fncGetUserLocaleInfo(1024, 14), ",");
  EXPECT_EQ(Tools().fncGetUserLocaleInfo(1024, 1), "");
  const struct {
    const char *Time, *Plain, *Marked, *Medium;
  } cases[] = {{"h:mm:ss tt", "h:mm:ss tt", "h:mm:ss AMPM", "h:mm AMPM"},
               {"HH.mm.s", "HH.mm.s", "HH.mm.s", "HH.mm"},
               {"ss:HH", "ss:HH", "ss:HH", ":HH"}};
  for (const auto& c : cases) {
    locale[LocaleItem::Time] = c.Time;
    EXPECT_EQ(Tools().fncGetLocaleTimeFormat(false), c.Plain);
    EXPECT_EQ(Tools().fncGetLocaleTimeFormat(true), c.Marked);
    EXPECT_EQ(Tools().fncGetLocaleMediumTimeFormat(), c.Medium);
  }
  EXPECT_EQ(Tools().fncGetSpecialFolderLocation(0, 26), "/home/u/.config");
  EXPECT_EQ(Tools().fncGetSpecialFolderLocation(0, 99), "");
}

TEST_F(DevicesTest, SettingsKeepTheirTypes) {
  Class_Registry registry;
  const struct {
    std::int32_t Type;
    RegistryValue Written, Read;
    Bytes Data;
  } cases[] = {
      {1, "ab", "ab", {'a', 'b', 0}},
      {1, 17, "17", {'1', '7', 0}},
      {1, {}, "", {0}},
      {2, "%HOME%/x%NONE%%HOME%%", "/home/u/x%NONE%/home/u%", {}},
      {3, Bytes{1, 0, 2}, Bytes{1, 0, 2}, {1, 0, 2}},
      {3, {}, Bytes{}, {}},
      {4, -2, -2, {0xFE, 0xFF, 0xFF, 0xFF}},
      {4, "&H102", 0x102, {2, 1, 0, 0}},
      {4, {}, 0, {0, 0, 0, 0}},
      {5, 0x01020304, 0x01020304, {1, 2, 3, 4}},
  };
  for (const auto& c : cases) {
    registry.SetRegistrySetting(Class_Registry::CurrentUser, "Soft\\Key", "Name", c.Written, c.Type);
    if (c.Type != 2) {
      EXPECT_EQ(world_->Store.Keys["Soft\\Key"]["Name"].Data, c.Data) << c.Type;
    }
    EXPECT_EQ(registry.GetRegistrySetting(Class_Registry::CurrentUser, "Soft\\Key", "Name", 1, {}), c.Read)
        << c.Type;
  }
  const std::pair<std::int32_t, RegistryValue> refused[] = {
      {1, Bytes{1}}, {3, "text"}, {4, "text"}, {5, Bytes{1}}};
  for (const auto& [type, value] : refused) {
    registry.ValueType = type;
    EXPECT_EQ(fake::failureOf([&] { registry.Let_Value(value); }).first, fault::TypeMismatch) << type;
  }
  registry.ValueType = 7;
  EXPECT_EQ(fake::failureOf([&] { registry.Let_Value("x"); }).first, fault::InvalidCall);

  world_->Store.Keys["K"]["V"] = {4, {1, 2}};
  EXPECT_EQ(registry.GetRegistrySetting(0, "K", "V", 4, "999"), RegistryValue("999"));
  world_->Store.Keys["K"]["V"] = {7, {1, 2}};
  EXPECT_EQ(registry.Get_Value(), RegistryValue("999"));
  EXPECT_EQ(registry.GetRegistrySetting(0, "K", "None", 4, 5), RegistryValue(5));
  EXPECT_EQ(Class_Registry::SwapEndian(0x80010203 - 0x100000000), 0x03020180);
}

TEST_F(DevicesTest, SettingsStoreThatRefuses) {
  Class_Registry registry;
  registry.SectionKey = "K";
  registry.ValueKey = "V";
  std::vector<std::string> names;
  std::int32_t count = 0;
  EXPECT_FALSE(registry.Get_KeyExists());
  EXPECT_TRUE(registry.CreateKey());
  EXPECT_TRUE(registry.Get_KeyExists());
  registry.Let_Value("x");
  EXPECT_TRUE(registry.EnumerateValues(names, count));
  EXPECT_EQ(names, std::vector<std::string>{"V"});
  EXPECT_TRUE(registry.EnumerateSections1(names, count));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(registry.DeleteValue());
  EXPECT_FALSE(registry.DeleteValue());
  EXPECT_TRUE(registry.DeleteKey());

  registry.CreateEXEAssociation("/bin/p", "Prog.File", "A file", "ext");
  const Bytes command = world_->Store.Keys["Prog.File\\shell\\open\\command"][""].Data;
  EXPECT_EQ(std::string(command.begin(), command.end() - 1), "/bin/p \"%1\"");
  EXPECT_TRUE(world_->Store.Keys.contains(".ext"));

  const std::string denied = "Access denied when accessing Windows registry";
  for (const auto& [error, words] :
       std::map<int, std::string>{{EACCES, denied},
                                  {EPERM, denied},
                                  {EIO, "Call to RegCreateKeyEx failed, returning error number: 5"}}) {
    world_->Store.Error = error;
    EXPECT_EQ(fake::failureOf([&] { registry.Let_Value("x"); }), std::pair(error, words));
  }
  registry.Default = "d";
  EXPECT_EQ(registry.Get_Value(), RegistryValue("d"));
  EXPECT_FALSE(registry.Get_KeyExists() || registry.CreateKey() || registry.DeleteKey() ||
               registry.DeleteValue());
  EXPECT_FALSE(registry.EnumerateValues(names, count) || registry.EnumerateSections1(names, count));
  EXPECT_EQ(count, 0);
  world_->Store.Error = 0;
  for (const auto& [error, words] : std::map<int, std::string>{{EACCES, denied}, {EIO, "words for 5"}}) {
    world_->Store.WriteError = error;
    EXPECT_EQ(fake::failureOf([&] { registry.Let_Value("x"); }), std::pair(error, words));
  }
}

}  // namespace
}  // namespace hy_wristlog
