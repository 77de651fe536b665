#pragma once

#include <span>
#include <string_view>

#include "simulator/bench.h"
#include "simulator/fault.h"

namespace hy_wristlog::simulator {

/// A fault that can be given by name.
struct NamedFault {
  std::string_view Name;  ///< words with blanks between them: "lose echo"
  std::string_view
      Counts;  ///< what it strikes some of: "echoed characters"; empty for what holds all the time
  std::string_view Argument;  ///< what it needs to be told: "BYTES"; empty for nothing
  std::string_view Words;     ///< what happens
  bool ForVarden, ForPendrel;

  /// Sets it: of those that are counted the ones that `when` says, of the others all unless it never strikes.
  /// Throws std::invalid_argument for a wrong argument.
  void (*Set)(const ModelBench& bench, const Fault& when, std::string_view argument);
};

/// All faults of the line, the dock and the loggers.
std::span<const NamedFault> namedFaults();

/// Sets a fault of the bench. Throws std::invalid_argument for a name that its logger does not have, and for
/// an argument that is missing, too much or wrong.
void setNamedFault(const ModelBench& bench, std::string_view name, const Fault& when,
                   std::string_view argument = {});

}  // namespace hy_wristlog::simulator
