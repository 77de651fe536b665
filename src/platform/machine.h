#pragma once

namespace hy_wristlog::platform {

/// Whether the calling thread's world is the machine itself, which every thread has. Other worlds are for one
/// thread each.
bool isMachine();

}  // namespace hy_wristlog::platform
