// The declarations of docks, Docks.INI.
#include <algorithm>
#include <string>

#include "platform/linux/declared_docks.h"
#include "support/fuzz.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {"[Dock #]",
                                      "[dock 1]",
                                      "VendorID=5245",
                                      "ProductID=4000",
                                      "ProductID=#",
                                      "COMport=#",
                                      "Device=/dev/ttyUSB#",
                                      "Device='/dev/serial/by-id/x'",
                                      "Device=rfc2217://host:#",
                                      "Device=rfc2217s://[fd00::#]:4001",
                                      "CA=/etc/ca.pem",
                                      "Class={4D36E978-E325-11CE-BFC1-08002BE10318}",
                                      "; #",
                                      "# #",
                                      "= #"};

using Docks = std::vector<platform::DeclaredDock>;

std::string iniOf(const Docks& docks) {
  std::string text;
  for (std::size_t i = 0; i < docks.size(); ++i)
    text += "[Dock " + std::to_string(i + 1) + "]\nVendorID=" + docks[i].VendorID +
            "\nProductID=" + docks[i].ProductID + "\nClass=\"" + docks[i].Class +
            "\"\nCOMport=" + std::to_string(docks[i].ComPort) + "\nDevice=\"" + docks[i].Device + "\"\n";
  return text;
}

bool isIdentifier(const std::string& text) {
  return text.empty() || (text.size() == 4 && text.find_first_not_of("0123456789ABCDEF") == text.npos);
}

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view ini) {
  const Docks docks = platform::parseDeclaredDocks(ini).Docks;
  require(docks.size() <= 256, "too many docks");
  for (const platform::DeclaredDock& dock : docks) {
    require(isIdentifier(dock.VendorID) && isIdentifier(dock.ProductID), "an identifier of another form");
    require(dock.Device.empty() || dock.Device.front() == '/' || platform::parseRemoteAddress(dock.Device),
            "a device that is no absolute path and no address");
    require(dock.Device.find('\0') == dock.Device.npos, "a path with a NUL");
    require(dock.ComPort >= 0, "a negative port");
  }
  require(iniOf(platform::parseDeclaredDocks(iniOf(docks)).Docks) == iniOf(docks),
          "docks declared again are others");
  for (std::int32_t port = -1; port <= 70; ++port) {
    const std::string device = platform::devicePathOfPort(port, docks);
    require(device.empty() || device.front() == '/' || platform::isRemoteAddress(device),
            "a port without a device");
  }
  reached("docks", static_cast<std::int64_t>(docks.size()));
}

}  // namespace hy_wristlog::fuzz
