#pragma once

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"
#include "picture/recording.h"

namespace wristlog {

/// What the pictures show of a decoded recording.
picture::PlottedRecording plottedRecording(hy_wristlog::Class_VardenLogger& logger,
                                           hy_wristlog::enmDecodeResult result, bool lowBattery);

}  // namespace wristlog
