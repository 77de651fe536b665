#pragma once

#include <memory>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// The machine itself.
std::shared_ptr<Platform> makeLinuxPlatform();

}  // namespace hy_wristlog::platform
