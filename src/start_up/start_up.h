#pragma once

namespace hy_wristlog {

/// Fills the calling thread's global state. Runs by itself when the state is first asked for.
void subMain();

/// Makes sure that the calling thread's global state is filled.
void openLibrary();

}  // namespace hy_wristlog
