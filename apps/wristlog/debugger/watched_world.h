#pragma once

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace wristlog {

/// A world that calls `attend` in every wait of the library, also in those in which it serves no events, and
/// whenever events are served.
/// Waits are cut into slices so short that a person notices no pause. With a `speed` above 0 a simulated
/// world's time passes at most `speed` times as fast as the machine's; 0 sets no limit. `machine` must
/// outlive the world.
std::shared_ptr<hy_wristlog::platform::Platform> makeWatchedWorld(
    const std::shared_ptr<hy_wristlog::platform::Platform>& world, hy_wristlog::platform::Clock& machine,
    double speed, std::function<void()> attend);

}  // namespace wristlog
