#include <gtest/gtest.h>

#include "base/ascii.h"
#include "platform/linux/declared_docks.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/port_numbers.h"
#include "platform/listed_docks.h"
#include "support/surroundings.h"

namespace hy_wristlog::platform {
namespace {

/// A recorded /sys, and the declarations beside it.
struct RecordedTree {
  void addUsbDevice(const std::string& name, const std::string& vendor, const std::string& product,
                    const std::string& text) const {
    const std::string folder = "devices/pci0/usb1/" + name + "/";
    files_.put(folder + "idVendor", vendor + "\n");
    files_.put(folder + "idProduct", product + "\n");
    files_.put(folder + "bcdDevice", "0600\n");
    if (!text.empty()) files_.put(folder + "product", text + "\n");
    files_.link("bus/usb/devices/" + name, "../../../devices/pci0/usb1/" + name);
  }

  void addTerminal(const std::string& tty, const std::string& usb) const {
    const std::string folder = "devices/pci0/usb1/" + usb + "/" + usb + ":1.0/" + tty + "/tty/" + tty;
    files_.link(folder + "/device", "../..");
    files_.link("class/tty/" + tty, "../../" + folder);
  }
  void declare(const std::string& ini) const { files_.put("Docks.INI", ini); }

  /// "hardware identifier|friendly name" of each device of the class.
  std::vector<std::string> list(std::string_view classGuid) const {
    const Variable root{"HY_WRISTLOG_SYS", files_.path()};
    const Variable docks{"HY_WRISTLOG_DOCKS", files_ / "Docks.INI"};
    const auto devices = makeLinuxPlatform()->deviceTree().devicesOfClass(classGuid);
    std::vector<std::string> result;
    for (std::size_t i = 0; devices->hasInterface(i); ++i) {
      devices->readInfo(i);
      result.push_back(devices->hardwareId(i) + "|" + devices->friendlyName(i));
    }
    EXPECT_THROW(devices->readInfo(result.size()), SystemError);
    return result;
  }
  /// The names of each device, a blank between them.
  std::vector<std::string> names(std::string_view classGuid) const {
    const Variable root{"HY_WRISTLOG_SYS", files_.path()};
    const Variable docks{"HY_WRISTLOG_DOCKS", files_ / "Docks.INI"};
    std::vector<std::string> result;
    for (const ListedDock& dock : devicesOf(makeLinuxPlatform()->deviceTree(), classGuid)) {
      result.emplace_back();
      for (const std::string& name : dock.Names) result.back() += name + " ";
    }
    return result;
  }
  std::vector<std::string> comPorts() const { return list("{4D36E978-E325-11CE-BFC1-08002BE10318}"); }
  std::vector<std::string> usbDevices() const { return list(UsbDeviceClass); }

  TemporaryFolder files_{};
};

using Names = std::vector<std::string>;

TEST(DeviceTree, ListsTheDevicesOfBothClasses) {
  const RecordedTree tree;
  tree.addUsbDevice("1-1", "5245", "4000", "Communications Dock");
  tree.addUsbDevice("1-2", "5245", "4001", "");
  tree.addUsbDevice("1-10", "0abc", "00ff", "Two\tports");
  tree.addTerminal("ttyUSB0", "1-1");
  tree.addTerminal("ttyUSB10", "1-10");
  tree.addTerminal("ttyUSB9", "1-10");
  tree.addTerminal("ttyXYZ0", "1-10");
  tree.files_.link("class/tty/ttyS0", "../../devices/platform/serial8250");
  tree.files_.link("devices/platform/serial8250/device", "../serial8250");
  const std::string dock = "USB\\VID_5245&PID_4000&REV_0600|Communications Dock (COM33)",
                    ports = "USB\\VID_0ABC&PID_00FF&REV_0600|Two?ports";
  EXPECT_EQ(tree.comPorts(), (Names{dock, ports + " (COM42)", ports, ports + " (COM43)"}));
  const std::string bare = "USB\\VID_5245&PID_4001&REV_0600|USB device";
  EXPECT_EQ(tree.usbDevices(), (Names{dock, bare, ports + " (COM42)"}));
}

TEST(DeviceTree, DeclaredDocksTakeTheirPlaceInTheTree) {
  const RecordedTree tree;
  tree.addUsbDevice("1-1", "5245", "4000", "Dock A");
  tree.addUsbDevice("1-2", "5245", "4002", "Dock B");
  tree.addTerminal("ttyUSB0", "1-1");
  tree.addTerminal("ttyUSB1", "1-2");
  tree.files_.put("dev/ttyUSB0", "");
  tree.files_.link("dev/by-id/dock-a", "../ttyUSB0");
  const std::string dev = tree.files_ / "dev/";
  const std::string b = "USB\\VID_5245&PID_4002&REV_0600|Dock B";

  const std::string dock = "[Dock 1]\nVendorID=5245\nProductID=4000\nCOMport=";
  const std::string declared = "USB\\VID_5245&PID_4000&REV_0000|Declared dock 1 ";
  const std::string a = "USB\\VID_5245&PID_4000&REV_0600|Dock A ";

  tree.declare(dock + "7\nDevice=" + dev + "by-id/dock-a\n");
  EXPECT_EQ(tree.comPorts(), (Names{declared + "(COM7)", b + " (COM34)"}));
  tree.declare("[Dock 1]\nCOMport=7\nDevice=" + dev + "ttyUSB0\n");
  EXPECT_EQ(tree.comPorts(), (Names{a + "(COM7)", b + " (COM34)"}));
  tree.declare(dock + "34\nDevice=/dev/null\n");
  EXPECT_EQ(tree.comPorts(), (Names{declared + "(COM34)", a + "(COM33)", b}));
  tree.declare(dock + "7\nDevice=" + dev + "unplugged\n[Dock 2]\nVendorID=5245\nProductID=4001\nClass=" +
               asciiUpper(std::string{UsbDeviceClass}) + "\n");
  EXPECT_EQ(tree.comPorts().size(), 2U);
  EXPECT_EQ(tree.usbDevices().front(), "USB\\VID_5245&PID_4001&REV_0000|Declared dock 2");
}

TEST(DeviceTree, DevicesHaveNamesThatStayWithTheirPlace) {
  const RecordedTree tree;
  tree.addUsbDevice("1-1.4", "5245", "4000", "Dock A");
  tree.addUsbDevice("1-2", "5245", "4002", "Dock B");
  tree.addTerminal("ttyUSB0", "1-1.4");
  tree.addTerminal("ttyUSB1", "1-2");
  tree.files_.put("devices/pci0/usb1/1-1.4/serial", "A7\n");
  tree.files_.put("dev/ttyUSB0", "");
  const std::string device = tree.files_ / "dev/ttyUSB0";
  EXPECT_EQ(tree.names(ComPortClass),
            (Names{"usb-1-1.4 A7 /dev/ttyUSB0 COM33 ", "usb-1-2 /dev/ttyUSB1 COM34 "}));
  tree.declare("[Dock 3]\nVendorID=5245\nProductID=4000\nCOMport=7\nDevice=" + device);
  EXPECT_EQ(tree.names(ComPortClass).front(), "Dock 3 " + device + " usb-1-1.4 A7 /dev/ttyUSB0 COM7 ");
  tree.declare("[Dock 3]\nCOMport=7\nDevice=" + device);
  EXPECT_EQ(tree.names(ComPortClass).front(), "usb-1-1.4 A7 /dev/ttyUSB0 Dock 3 COM7 ");
  EXPECT_EQ(tree.names(PlainPortClass), (Names{"Dock 3 " + device + " usb-1-1.4 A7 /dev/ttyUSB0 COM7 "}));
}

TEST(DeviceTree, DamageIsPassedOver) {
  const RecordedTree tree;
  const TemporaryFolder& files = tree.files_;
  EXPECT_EQ(tree.comPorts(), Names{});
  tree.addUsbDevice("1-1", "5245", "4000", "Dock");
  tree.addTerminal("ttyUSB0", "1-1");
  const Names healthy{"USB\\VID_5245&PID_4000&REV_0600|Dock (COM33)"};
  files.link("class/tty/ttyUSB1", "ttyUSB1");
  const TemporaryFolder outside;
  for (const char* name : {"idVendor", "idProduct"}) outside.put(name, "5245\n");
  files.link("class/tty/ttyUSB5/device", outside.path());
  files.link("bus/usb/devices/out", outside.path());
  int bad = 0;
  using namespace std::string_literals;
  for (const std::string& vendor : {"52"s, ""s, "52g5"s, std::string(100000, '5'), "52\0005"s}) {
    const std::string name = "bad" + std::to_string(bad);
    tree.addUsbDevice(name, vendor, "4000", "Bad");
    tree.addTerminal("ttyACM" + std::to_string(bad++), name);
  }
  EXPECT_EQ(tree.comPorts(), healthy);
  EXPECT_EQ(tree.usbDevices(), healthy);
}

TEST(PortNumbers, StandForDevicesByOneRule) {
  const std::pair<const char*, std::int32_t> pairs[] = {
      {"ttyS0", 1},     {"ttyS31", 32},   {"ttyUSB0", 33},        {"ttyUSB15", 48},
      {"ttyACM0", 49},  {"ttyACM15", 64}, {"ttyUSB16", 65},       {"ttyACM16", 66},
      {"ttyUSB17", 67}, {"ttyACM17", 68}, {"ttyUSB16367", 32767}, {"ttyACM16366", 32766}};
  for (const auto& [tty, number] : pairs) {
    EXPECT_EQ(portNumberOfTty(tty), number);
    EXPECT_EQ(ttyOfPortNumber(number), tty);
  }
  for (const char* tty : {"", "tty", "tty1", "ttyS", "ttyS32", "ttyS01", "ttyUSB", "ttyUSB-1", "ttyUSB1x",
                          "ttyUSB16368", "ttyACM99999999999", "ttyAMA0", "xttyUSB0"})
    EXPECT_EQ(portNumberOfTty(tty), 0) << tty;
  for (const std::int32_t number : {0, -1, 32768}) EXPECT_EQ(ttyOfPortNumber(number), "");
}

TEST(DeclaredDocks, AreReadWithWhatIsUsable) {
  const auto [docks, troubles] = parseDeclaredDocks(
      "\xEF\xBB\xBF; docks of the ward\r\n"
      "VendorID=1111\r\n"
      "[Other]\r\nVendorID=2222\r\n"
      "[ dock 1 ]\r\n vendorid = 5245 "
      "\r\nPRODUCTID=\"4a\"\r\nproductid=4001\r\ncomport=5\r\nDevice='/dev/pts/3'\r\n"
      "# the second one\n[Dock 2]\nVendorID=52455\nProductID=xyz\nCOMport=65\nDevice=dock.example:7000\n"
      "[Dock 3]\nDevice=/dev/ttyACM1\nCOMport=0\n"
      "[Dock 4]\nCOMport=33\nnonsense\n=\n[Dock 4x]\nCOMport=9\n[Dock\nCOMport=9\n"
      "[Dock 3]\nVendorID=5245\nCOMport=99999999999");
  std::string seen;
  for (const DeclaredDock& dock : docks) {
    seen +=
        dock.VendorID + "," + dock.ProductID + "," + std::to_string(dock.ComPort) + "," + dock.Device + ";";
    EXPECT_EQ(dock.Class, ComPortClass);
  }
  EXPECT_EQ(troubles.size(), 15U);
  EXPECT_EQ(seen, "5245,004A,5,/dev/pts/3;,,0,;5245,,50,/dev/ttyACM1;,,33,/dev/ttyUSB0;");
  EXPECT_EQ(devicePathOfPort(5, docks), "/dev/pts/3");
  EXPECT_EQ(devicePathOfPort(6, docks), "/dev/ttyS5");
  EXPECT_EQ(devicePathOfPort(0, docks), "");
  for (const char* text : {"", "[", "[]", "]", "[Dock 1", "=", "[Dock ]\nCOMport=1", "\n\n\r\r"})
    EXPECT_TRUE(parseDeclaredDocks(text).Docks.empty()) << text;
}

TEST(DeclaredDocks, OnOtherMachinesGetNumbersThatNothingElseHas) {
  const auto docks = parseDeclaredDocks(
                         "[Dock 1]\nDevice=RFC2217://lab-1.example:4001\n"
                         "[Dock 2]\nDevice=rfc2217s://[fe80::1%eth0]:65535\nCertificate=/c\nFingerprint=" +
                         std::string(64, 'a') +
                         "\n[Dock 3]\nDevice=/dev/ttyS30\n[Dock 4]\nCOMport=32\n"
                         "[Dock 5]\nDevice=rfc2217://127.0.0.1:1\nCOMport=7")
                         .Docks;
  std::string seen;
  for (const DeclaredDock& dock : docks) seen += std::to_string(dock.ComPort) + "," + dock.Device + ";";
  EXPECT_EQ(
      seen,
      "30,rfc2217://lab-1.example:4001;29,rfc2217s://[fe80::1%eth0]:65535;31,/dev/ttyS30;32,/dev/ttyS31;"
      "7,rfc2217://127.0.0.1:1;");
  EXPECT_EQ(docks[1].Identity.Fingerprint, std::string(64, 'A'));
  for (const char* bad : {"rfc2217://", "rfc2217://a", "rfc2217://a:0", "rfc2217://a:65536", "rfc2217://a:1x",
                          "rfc2217://fe80::1:1", "rfc2217://[a]:1", "rfc2217://a b:1", "rfc2217://-a:1",
                          "rfc2217://[::1]", "rfc2217://[::1%]:1", "rfc2217://user@a:1", "rfc2217s://a:1/"})
    EXPECT_EQ(parseRemoteAddress(bad).has_value(), false) << bad;
  std::string many;
  for (int i = 1; i <= 65; ++i)
    many += "[Dock " + std::to_string(i) + "]\nDevice=rfc2217://a:" + std::to_string(i) + "\n";
  const auto [last, troubles] = parseDeclaredDocks(many);
  EXPECT_TRUE(last[63].ComPort == 33 && last[64].ComPort == 0 && troubles.size() == 66);
}

TEST(DeclaredDocks, AreToldWhenTheySayNothingUsable) {
  const auto troubles = [](const std::string& ini) {
    std::string words;
    for (const std::string& trouble : parseDeclaredDocks(ini).Troubles) words += trouble + "\n";
    return words;
  };
  const std::string dock = "[Dock 1]\nDevice=/dev/null\nCOMport=3\nVendorID=5245\n";
  for (const char* product : {"4000", "4001", "4002"}) EXPECT_EQ(troubles(dock + "ProductID=" + product), "");
  EXPECT_EQ(parseDeclaredDocks(dock + "ProductID=4001").Docks[0].Class, UsbDeviceClass);
  EXPECT_EQ(troubles("[Dock 1]\nDevice=/dev/ttyS4"), "");
  const std::string unknown = "[Dock 1] is no dock known here";
  for (const auto& [ini, words] : std::initializer_list<std::pair<std::string, std::string>>{
           {"", "declares no dock"},
           {"\xFF\xFE[\0D", "UTF-16"},
           {"COMport=3\n" + dock, "Line 1 stands in front of the first section"},
           {"[Dock]", "Line 1 is not the section of a dock"},
           {"[Dock 1", "Line 1 has no closing bracket"},
           {dock + "nonsense", "Line 5 is no section"},
           {dock + "Produkt=4000", "Line 5 is no entry of a dock"},
           {dock + "ProductID=0x4000", "Line 5 is no hexadecimal number"},
           {dock + "ProductID=4000 ; of the ward", "Line 5 has a comment"},
           {dock + "ProductID=4003", unknown},
           {dock, unknown},
           {"[Dock 1]\nDevice=ttyS4", "Line 2 is no whole path"},
           {"[Dock 1]\nDevice=rfc2217://lab", "Line 2 is no whole address"},
           {"[Dock 1]\nDevice=rfc2217://lab:1",
            "is reached without TLS: names and data travel readable to lab."},
           {"[Dock 1]\nDevice=rfc2217://lab:1\nCA=/ca.pem", "has entries for TLS, which its Device does not"},
           {"[Dock 1]\nDevice=rfc2217s://lab:1\nKey=/key.pem", "has a Key without a Certificate"},
           {"[Dock 1]\nFingerprint=12:34", "Line 2 is no SHA-256 fingerprint"},
           {"[Dock 1]\nCOMport=65", "Line 2 is no number from 1 to 64"},
           {"[Dock 1]\nVendorID=5245\nProductID=4000", "names no device"}})
    EXPECT_NE(troubles(ini).find(words), std::string::npos) << ini << troubles(ini);
}

TEST(DeclaredDocks, LieInTheUsersDataFolder) {
  const TemporaryFolder home;
  const Variable named{"HY_WRISTLOG_DOCKS", std::nullopt};
  const Variable config{"XDG_CONFIG_HOME", home / "config"};
  const Variable tree{"HY_WRISTLOG_SYS", home / "nothing"};
  const auto world = makeLinuxPlatform();
  EXPECT_FALSE(world->deviceTree().devicesOfClass(ComPortClass)->hasInterface(0));
  EXPECT_TRUE(world->deviceTree().troubles().empty());
  const auto expectTrouble = [&](const std::string& words) {
    const std::vector<std::string> troubles = world->deviceTree().troubles();
    ASSERT_EQ(troubles.size(), 1U);
    EXPECT_NE(troubles[0].find("Docks.INI: " + words), std::string::npos) << troubles[0];
  };
  home.put("config/HY_Wristlog/Docks.INI",
           "[Dock 1]\nVendorID=5245\nProductID=4000\nDevice=/dev/gone\nCOMport=3");
  expectTrouble("[Dock 1] names /dev/gone, which is not there.");
  home.put("config/HY_Wristlog/Docks.INI",
           "[Dock 1]\nVendorID=5245\nProductID=4000\nDevice=/dev/null\nCOMport=3");
  EXPECT_EQ(world->deviceTree().devicesOfClass(ComPortClass)->friendlyName(0), "Declared dock 1 (COM3)");
  EXPECT_TRUE(world->deviceTree().troubles().empty());
}

}  // namespace
}  // namespace hy_wristlog::platform
