#pragma once

#include <string>

#include "hy_wristlog/Class_Pendrel.h"
#include "picture/recording.h"

namespace wristlog {

/// What the pictures show of a retrieved recording of the older family. `model` in words.
picture::PlottedRecording plottedRecording(const hy_wristlog::Class_Pendrel& logger,
                                           const std::string& model);

}  // namespace wristlog
