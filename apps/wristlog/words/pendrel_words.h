#pragma once

#include <string>
#include <vector>

#include "hy_wristlog/Class_Pendrel.h"
#include "words/say.h"
#include "workflows/pendrel/PendrelWorkflows.h"

namespace wristlog {

/// Without one its remaining days are unknown, and read as 0.
bool hasBatteryDate(const hy_wristlog::Class_Pendrel& logger);

/// What a logger is, what it holds and what is wrong with it, in lines.
void tellStatus(const Speech& out, const hy_wristlog::Class_Pendrel& logger,
                const hy_wristlog::PendrelDetails& details);

/// What stands in the way of a good recording or of retrieving it, a sentence each.
std::vector<std::string> problemsOf(const hy_wristlog::Class_Pendrel& logger,
                                    const hy_wristlog::PendrelDetails& details);

}  // namespace wristlog
