#pragma once

namespace hy_wristlog {

/// Fills the calling thread's global state. Runs by itself when the state is first asked for.
void subMain();

}  // namespace hy_wristlog
