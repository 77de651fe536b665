#pragma once

#include "varden/record.h"

namespace hy_wristlog {

/// The zone that the logger was set up for. It is the zone of the logger's standard abbreviation if its
/// biases are the logger's and, with AutoDSTadjust, its changes too. Otherwise it is the first zone with the
/// logger's bias, or null. Raises NoZones when the system has no zones.
TimeZoneRef findLoggerZone(const VardenRecord& record);

}  // namespace hy_wristlog
