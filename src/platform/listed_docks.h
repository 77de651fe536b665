#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// A device of the tree that loggers can be reached by.
struct ListedDock {
  std::string HardwareId;          ///< empty of a plain port
  std::vector<std::string> Names;  ///< the steadiest first; at least one
  std::int32_t Port = 0;           ///< COM port; 0 for none
};

/// The number after the first "COM" of a friendly name; 0 when there is none.
std::int16_t portInName(std::string_view friendlyName);

/// The names of a device, its port's ("COM5") among them. Empty for one without a name and without a port.
std::vector<std::string> namesOf(DeviceList& devices, std::size_t index);

/// All devices of a class that have a name. Raises SystemError.
std::vector<ListedDock> devicesOf(DeviceTree& tree, std::string_view classGuid);

}  // namespace hy_wristlog::platform
