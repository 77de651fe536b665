#pragma once

#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "platform/platform.h"

namespace wristlog {

/// Adds one row an epoch: local time with its offset from UTC, UTC, and a column for each array that the
/// recording's mode has. The cell of an epoch without a value is empty.
void addSeriesCsv(hy_wristlog::platform::NewFile& file, const hy_wristlog::Class_VardenLogger& logger);
void addSeriesCsv(hy_wristlog::platform::NewFile& file, const hy_wristlog::Class_Pendrel& logger);

}  // namespace wristlog
