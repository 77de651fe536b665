#pragma once

#include <cstdint>
#include <string>

#include "simulator/dockable.h"

namespace wristlog {

/// The section of Docks.INI that makes the served device a dock.
struct DockSection {
  hy_wristlog::simulator::DockKind Kind{};
  std::int32_t ComPort = 0;
  std::string Device;
  std::string Fingerprint;  ///< of the certificate of a device with TLS, else empty

  std::string name() const { return "Dock " + std::to_string(ComPort); }
  std::string text() const;
};

/// Puts the section into a file of docks in the place of one of the same name; the rest of the file stays. An
/// empty device takes the section out, and the file when nothing else is in it. Raises Failure
/// PathFileAccess.
void putIntoDocksFile(const std::string& file, const DockSection& section);

}  // namespace wristlog
