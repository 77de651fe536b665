#pragma once

#include <string>
#include <vector>

#include "hy_wristlog/Class_Pendrel.h"
#include "words/say.h"
#include "workflows/pendrel/PendrelWorkflows.h"

namespace wristlog {

/// Whether the battery's date is known; without it the remaining days read 0.
bool hasBatteryDate(const hy_wristlog::Class_Pendrel& logger);

/// Tells in lines what a logger is, what it holds and what is wrong with it.
void tellStatus(const Speech& out, const hy_wristlog::Class_Pendrel& logger,
                const hy_wristlog::PendrelDetails& details);

/// One sentence for each thing that stands in the way of recording or retrieving.
std::vector<std::string> problemsOf(const hy_wristlog::Class_Pendrel& logger,
                                    const hy_wristlog::PendrelDetails& details);

}  // namespace wristlog
