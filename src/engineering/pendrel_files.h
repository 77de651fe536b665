#pragma once

#include <string>

#include "hy_wristlog/Class_Pendrel.h"

/// The engineers' files of a Pendrel's recording, in the form of the Varden family's. Each is written whole
/// or not at all.
namespace hy_wristlog::engineering {

/// The memory image, header included.
void saveRawDump(Class_Pendrel& logger, const std::string& path);
/// Decodes the recording, and writes its epochs in local time by the start's offset. False when the image
/// ends before the recording does. Raises what decoding raises.
bool saveReport(Class_Pendrel& logger, const std::string& path);

}  // namespace hy_wristlog::engineering
