#pragma once

#include "component/handle.h"

namespace hy_wristlog::component {

/// A handle that was released long ago, or a new one.
Handle& takeHandle();
void giveBackHandle(Handle& handle) noexcept;

}  // namespace hy_wristlog::component
