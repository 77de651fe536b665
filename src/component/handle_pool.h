#pragma once

#include "component/handle.h"

namespace hy_wristlog::component {

/// A handle that nothing has used for a long while, or a new one.
Handle& takeHandle();
void giveBackHandle(Handle& handle) noexcept;

}  // namespace hy_wristlog::component
