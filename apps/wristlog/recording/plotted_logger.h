#pragma once

#include "picture/recording.h"
#include "recording/decoded_recording.h"

namespace wristlog {

/// What the pictures show of a decoded recording.
picture::PlottedRecording plottedRecording(DecodedRecording recording);

}  // namespace wristlog
