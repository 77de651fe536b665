#pragma once

#include <string>

#include "picture/recording.h"
#include "recording/decoded_recording.h"

namespace wristlog {

/// What the pictures show of a decoded recording.
picture::PlottedRecording plottedRecording(DecodedRecording recording);

/// What the logger's mode records: "activity and light". Empty for a mode that its model does not have.
std::string modeWords(const hy_wristlog::Class_VardenLogger& logger);

}  // namespace wristlog
