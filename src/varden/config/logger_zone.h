#pragma once

#include "varden/record.h"

namespace hy_wristlog {

/// The zone that the logger was set up for: the one of its standard abbreviation, when its biases and, with
/// AutoDSTadjust, its changes are the logger's; otherwise the first one with the logger's bias; null when
/// there is none. Raises 9998 when the system has no zones.
TimeZoneRef findLoggerZone(const VardenRecord& record);

}  // namespace hy_wristlog
