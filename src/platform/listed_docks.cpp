#include "platform/listed_docks.h"

#include <charconv>

#include "base/ascii.h"

namespace hy_wristlog::platform {
namespace {

/// A device that was just plugged in may not have its name yet.
std::int32_t portOf(DeviceList& devices, std::size_t index) {
  try {
    return portInName(devices.friendlyName(index));
  } catch (const SystemError&) {
    return 0;
  }
}

}  // namespace

std::int16_t portInName(std::string_view friendlyName) {
  constexpr std::string_view Mark = "COM";
  friendlyName = cutAtNul(friendlyName);
  const auto found = friendlyName.find(Mark);
  if (found == std::string_view::npos) return 0;
  const std::string_view digits = trimBlanks(friendlyName.substr(found + Mark.size()));
  std::int16_t port = 0;
  if (digits.starts_with('-')) return 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), port).ec != std::errc{}) return 0;
  return port;
}

std::vector<std::string> namesOf(DeviceList& devices, std::size_t index) {
  std::vector<std::string> names = devices.names(index);
  if (const std::int32_t port = portOf(devices, index); port > 0)
    names.push_back("COM" + std::to_string(port));
  return names;
}

std::vector<ListedDock> devicesOf(DeviceTree& tree, std::string_view classGuid) {
  std::vector<ListedDock> found;
  const auto devices = tree.devicesOfClass(classGuid);
  for (std::size_t index = 0; devices && devices->hasInterface(index); ++index) {
    ListedDock dock{devices->hardwareId(index), namesOf(*devices, index), portOf(*devices, index)};
    if (!dock.Names.empty()) found.push_back(std::move(dock));
  }
  return found;
}

}  // namespace hy_wristlog::platform
