#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "commands/harvest.h"
#include "recording/json.h"

namespace wristlog {

/// Shows a harvest as it goes on: on a terminal a line a dock on standard error, with --json an event a line
/// on standard output, otherwise nothing.
std::unique_ptr<HarvestWatch> makeHarvestWatch(bool asJson, const std::vector<hy_wristlog::Dock>& docks);

/// A dock and what came of it.
Json outcomeJson(const hy_wristlog::Dock& dock, const HarvestOutcome& outcome);

/// Prints a document on one line.
void printLine(const Json& document);

}  // namespace wristlog
