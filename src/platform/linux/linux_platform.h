#pragma once

#include <memory>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// The machine itself: termios ports, /sys, XDG folders, the tz database, libcrypto.
HY_WRISTLOG_API std::shared_ptr<Platform> makeLinuxPlatform();

}  // namespace hy_wristlog::platform
