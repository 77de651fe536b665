#pragma once

#include <memory>

#include "platform/platform.h"

namespace wristlog {

/// The machine, except that its clock stands at one moment (UTC; a date), and local time is UTC.
std::shared_ptr<hy_wristlog::platform::Platform> machineAt(double utc);

}  // namespace wristlog
