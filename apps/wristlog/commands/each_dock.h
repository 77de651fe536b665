#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "hy_wristlog/docks.h"
#include "platform/platform.h"

namespace wristlog {

/// Makes the world in which a thread works with a dock.
using WorldOfDock =
    std::function<std::shared_ptr<hy_wristlog::platform::Platform>(const hy_wristlog::Dock& dock)>;

/// Calls `work` with the place of each dock, all at the same time, each on a thread of its own, and returns
/// when the last one has ended. `work` raises nothing. A thread's world is the machine, or what `world`
/// makes. Where the calling thread's world is its own alone, and there is no `world`, the docks are worked
/// with there, one after another.
void forEachDock(const std::vector<hy_wristlog::Dock>& docks, const std::function<void(std::size_t)>& work,
                 const WorldOfDock& world = {});

}  // namespace wristlog
