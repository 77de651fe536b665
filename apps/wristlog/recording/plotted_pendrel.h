#pragma once

#include <string>

#include "picture/recording.h"
#include "recording/decoded_recording.h"

namespace wristlog {

/// What the pictures show of a recording of the older family.
picture::PlottedRecording plottedPendrel(const DecodedRecording& recording);

/// What the logger's mode records: "activity and steps".
std::string modeWords(const hy_wristlog::Class_Pendrel& logger);
/// How old its battery is and what is left of it; empty when its date is not known.
std::string batteryWords(const hy_wristlog::Class_Pendrel& logger);

}  // namespace wristlog
