#pragma once

#include <string>

#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"

namespace wristlog {

/// One row an epoch: local time with its offset from UTC, UTC, and a column for each array that the
/// recording's mode has; empty for no value.
std::string seriesCsv(const hy_wristlog::Class_VardenLogger& logger);
std::string seriesCsv(const hy_wristlog::Class_Pendrel& logger);

}  // namespace wristlog
