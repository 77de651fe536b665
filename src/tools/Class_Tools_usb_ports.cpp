#include <memory>

#include "base/ascii.h"
#include "platform/listed_docks.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/guarded.h"

namespace hy_wristlog {
namespace {

using platform::DeviceList;
using platform::SystemError;

constexpr int NameAttempts = 3;
constexpr std::int32_t PauseBetweenAttempts = 100;

/// The result of `call`. A system error in it is raised as a failure that names the call.
template <class Call>
auto enumerating(const char* words, Call&& call) {
  try {
    return call();
  } catch (const SystemError& error) {
    throw Failure(error.Number, "Class_Tools.fncUSBdeviceCOMport",
                  words + ("error number:" + std::to_string(error.Number)) +
                      ", error description: " + Class_Tools::fncGetErrorStringFromDLLerrorNum(error.Number));
  }
}

/// Waits some time for the name, which a device that was just plugged in may not have yet.
std::int16_t readPort(DeviceList& devices, std::size_t index) {
  for (int attempt = 1;; ++attempt) {
    try {
      return platform::portInName(devices.friendlyName(index));
    } catch (const SystemError&) {
      if (attempt == NameAttempts) return 0;
    }
    Class_Tools::subDelay(PauseBetweenAttempts);
  }
}

}  // namespace

std::int16_t Class_Tools::fncUSBdeviceCOMport(const std::string& VendorID, const std::string& ProductID,
                                              const std::string& DevIntClassGUID,
                                              std::int16_t& NumConnected) {
  NumConnected = 0;
  std::int16_t port = 0;
  Procedure procedure{"Class_Tools", "fncUSBdeviceCOMport"};
  return procedure.run([&]() -> std::int16_t {
    const auto devices = procedure.statement([&] {
      return enumerating("Error getting device handle, call to 'SetupDiGetClassDevs', ",
                         [&] { return platform::current().deviceTree().devicesOfClass(DevIntClassGUID); });
    });
    if (!devices) return 0;
    for (std::size_t index = 0;; ++index) {
      const bool more = procedure.statement([&] {
        return enumerating("Error enumerating device info, call to 'SetupDiEnumDeviceInterfaces', ",
                           [&] { return devices->hasInterface(index); });
      });
      if (!more) break;
      procedure.statement([&] {
        enumerating("Error enumerating device info, call to 'SetupDiEnumDeviceInfo', ",
                    [&] { devices->readInfo(index); });
      });
      const std::string identifiers = procedure.statement([&] {
        return enumerating("Error getting reg property, call to 'SetupDiGetDeviceRegistryProperty', ",
                           [&] { return devices->hardwareId(index); });
      });
      const std::string identifier = asciiUpper(fncTrimNull(identifiers));
      if (identifier.find(VendorID) == std::string::npos || identifier.find(ProductID) == std::string::npos)
        continue;
      NumConnected = fault::narrow<std::int16_t>(NumConnected + 1);
      if (NumConnected == 1) port = readPort(*devices, index);
    }
    return NumConnected == 1 ? port : std::int16_t{0};
  });
}

}  // namespace hy_wristlog
