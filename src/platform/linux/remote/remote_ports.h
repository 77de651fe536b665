#pragma once

#include <memory>
#include <string>

#include "platform/platform.h"
#include "platform/remote_address.h"

namespace hy_wristlog::platform {

/// Opens the port that a server of RFC 2217 has at `address`, both output lines low; `name` is the port's
/// name in failures. The name is looked up and the connection made within 5 s, and the server has as long
/// again for TLS and for its first answers. Events of the thread's world are served meanwhile, and an abort
/// ends the wait. Raises PortNotAvailable for a port that somebody else uses, InvalidPort, in words of their
/// own, for all else that keeps it from being opened.
std::unique_ptr<SerialPort> openRemotePort(const RemoteAddress& address, const TlsIdentity& identity,
                                           const std::string& name);

}  // namespace hy_wristlog::platform
