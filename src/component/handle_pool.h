#pragma once

#include "component/handle.h"

namespace hy_wristlog::component {

/// A shell that nothing has used for a long while, or a new one.
Shell& takeShell();
void giveBackShell(Shell& shell) noexcept;

}  // namespace hy_wristlog::component
