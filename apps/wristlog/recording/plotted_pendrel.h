#pragma once

#include "picture/recording.h"
#include "recording/decoded_recording.h"

namespace wristlog {

/// What the pictures show of a recording of the older family.
picture::PlottedRecording plottedPendrel(const DecodedRecording& recording);

}  // namespace wristlog
