#pragma once

#include "varden/decode/decode_walk.h"

namespace hy_wristlog {

/// Handles an acquisition start at `time`: acquiring begins or goes on, and the gap before it is filled with
/// epochs without a value. Ends the walk with Decode_StartBeforeLastStop or Decode_BigDiffBetweenAcqTimes.
/// Raises OutOfMemory when the recording's gaps add up to more than a logger can record.
void startAcquisition(DecodeWalk& walk, double time);

/// Handles an acquisition stop at `time`. Ends the walk with Decode_AcqStopTimeBeforePriorData when samples
/// are later than the stop. Result 16 tells of a stop long ago.
void stopAcquisition(DecodeWalk& walk, double time);

}  // namespace hy_wristlog
