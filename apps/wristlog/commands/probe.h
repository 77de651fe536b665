#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hy_wristlog/docks.h"
#include "session/options.h"

namespace wristlog {

/// What a dock's logger has told, and nothing of it was changed.
struct Probe {
  std::string State;         ///< the short status, or why there is none
  std::string SerialNumber;  ///< empty when no logger was read
  std::string Identity;
};

/// The dock that --dock names; all docks when `name` is empty. Raises what `useDock` raises.
std::vector<hy_wristlog::Dock> docksCalled(const std::string& name);

/// The options of a session with one dock of several, in the world that the calling thread has.
CommonOptions forDock(const CommonOptions& common, const hy_wristlog::Dock& dock);

/// Asks who sits in the dock. Raises nothing: what fails is the state.
Probe probe(const CommonOptions& common, const hy_wristlog::Dock& dock);

/// Calls `work`; what it raises becomes words, which are empty when it raises nothing.
std::string troubleOf(const std::function<void()>& work);

}  // namespace wristlog
