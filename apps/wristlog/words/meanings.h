#pragma once

#include <cstdint>
#include <string>

#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/failure.h"

namespace wristlog {

/// What a return code of a workflow means, and what to do about it.
std::string meaningOf(std::int32_t returnCode);

/// The same, with what can be found out now about the model's dock.
std::string explanationOf(std::int32_t returnCode, hy_wristlog::enmLoggerPointer model);

/// That a search has found no dock, and what to do about it.
std::string wordsForNoDock(const std::string& name = "dock");

/// The same for the Pendreader's commands, where some codes mean something else. `port` is its COM port, 0
/// when none is known.
std::string pendrelExplanationOf(std::int32_t returnCode, std::int16_t port);

/// Why the port of the model's only dock cannot be opened or, without a dock, what keeps declared ones from
/// being found; empty when nothing is wrong.
std::string dockTroubleOf(hy_wristlog::enmLoggerPointer model);

/// Why the model's dock, which is on another machine, cannot be reached; empty for a dock of this machine and
/// when nothing is wrong.
std::string farTroubleOf(hy_wristlog::enmLoggerPointer model);

/// The failure that ended a command, in one line.
std::string wordsFor(const hy_wristlog::Failure& failure);

}  // namespace wristlog
