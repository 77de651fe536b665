#pragma once

#include "varden/decode/decode_walk.h"

namespace hy_wristlog {

/// An acquisition start at `time`: begins or goes on with acquiring, and fills the gap before it with epochs
/// that have no value. Ends the walk with result 5 or 15. Fault 7 when the gaps of a recording add up to more
/// than it can mean.
void startAcquisition(DecodeWalk& walk, double time);

/// An acquisition stop at `time`. Ends the walk with result 6 when data lie behind it; result 16 tells of a
/// stop long ago.
void stopAcquisition(DecodeWalk& walk, double time);

}  // namespace hy_wristlog
