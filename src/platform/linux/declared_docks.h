#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/remote_address.h"

namespace hy_wristlog::platform {

/// A dock that the user declares. Entries that say nothing usable are empty or 0.
struct DeclaredDock {
  std::string Name;                 ///< of its section, such as "Dock 1"
  std::string VendorID, ProductID;  ///< four upper-case hexadecimal digits
  std::string Class;                ///< lower case, with braces
  std::int32_t ComPort = 0;         ///< 1 to 64
  std::string Device;               ///< an absolute path, or an address of another machine
  TlsIdentity Identity;             ///< of a connection with TLS

  /// Whether its device can be seen: a path that exists, or any address.
  bool isThere() const;
};

struct DeclaredDocks {
  std::vector<DeclaredDock> Docks;
  std::vector<std::string> Troubles;  ///< what is wrong or risky in the declarations, a sentence each
};

/// Reads sections "[Dock n]" with the keys VendorID, ProductID, Class, COMport, Device, CA, Fingerprint,
/// Certificate and Key, names in any case, the first of equal keys; lines that start with ";" or "#" are
/// comments. A dock without COMport has the number of its Device by rule, one without Device the device of
/// its COMport, one without Class that under which the dock of its ProductID is looked for. Docks on other
/// machines that are declared without COMport get the highest numbers up to 32, then up to 64, that no other
/// declaration has.
DeclaredDocks parseDeclaredDocks(std::string_view ini);

/// The declarations of this user: the file that HY_WRISTLOG_DOCKS names, else "Docks.INI" in `dataFolder`.
/// Empty when there is no such file. The troubles name the file, and devices that are not there.
DeclaredDocks readDeclaredDocks(const std::string& dataFolder);

/// The dock that a COM port number is declared for; null when there is none.
const DeclaredDock* declaredDockOfPort(std::int32_t number, const std::vector<DeclaredDock>& docks);

/// The device of a COM port number: the declared one, else that of the fixed rule; empty for a number without
/// a device.
std::string devicePathOfPort(std::int32_t number, const std::vector<DeclaredDock>& docks);

}  // namespace hy_wristlog::platform
