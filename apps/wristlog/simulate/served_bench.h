#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "simulator/bench.h"
#include "simulator/saved_state.h"

namespace wristlog {

/// How a new logger is made.
struct NewLogger {
  std::string Model;            ///< one of simulator::ModelNames
  std::chrono::minutes Worn{};  ///< how long it has been worn until now; 0: as it left the factory
  std::string SerialNumber;     ///< empty: the model's usual one
  std::uint32_t Seed = 1;       ///< of the days of who wears it
};

/// The bench of a new logger, which is in no dock. Raises Failure InvalidCall for options that no logger has.
hy_wristlog::simulator::ModelBench makeNewBench(const NewLogger& options);

/// The bench that was saved. The time since then has passed for its logger too. Raises WrongState.
hy_wristlog::simulator::ModelBench loadBench(hy_wristlog::simulator::SavedState& state,
                                             const std::string& model);
/// Saves the bench with the machine's time.
void saveBench(hy_wristlog::simulator::SavedState& state, const std::string& model,
               const hy_wristlog::simulator::ModelBench& bench);

}  // namespace wristlog
