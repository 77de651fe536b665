#pragma once

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace wristlog {

/// A world in which something is attended to while time passes, in slices so short that a person notices no
/// pause: `attend` runs in every wait of the library, also in those in which it serves no events.
///
/// With a `speed` above 0 a simulated world's time passes `speed` times as fast as the machine's, not faster;
/// 0 lets it run. `machine` must outlive the world.
std::shared_ptr<hy_wristlog::platform::Platform> makeWatchedWorld(
    const std::shared_ptr<hy_wristlog::platform::Platform>& world, hy_wristlog::platform::Clock& machine,
    double speed, std::function<void()> attend);

}  // namespace wristlog
