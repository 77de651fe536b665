#pragma once

#include "errors/GlobalState.h"
#include "support/fuzz.h"
#include "support/quiet_machine.h"
#include "support/scripted_world.h"

namespace hy_wristlog::fuzz {

/// The thread works on a quiet machine whose time moves only when something waits, and whose serial line
/// leads to `world->OnWrite`.
struct QuietWorld {
  scripted::InWorld world{std::make_shared<QuietMachine>()};

  scripted::World* operator->() const { return world.operator->(); }

  /// The failure of a step that goes through procedures: also those that they have answered themselves must
  /// be named.
  template <class Step>
  std::int32_t failureOf(Step&& step) const {
    globals().emptyErrorStack();
    const std::int32_t number = fuzz::failureOf(step);
    for (const auto& record : globals().ErrorStack)
      if (record && (!isNamed(record->ErrorNumber) || record->ErrorNumber == FailureNumber::Internal))
        finding("failure " + std::to_string(record->ErrorNumber) + " of " + record->ErrorProcedure + ": " +
                record->ErrorDescription);
    return number;
  }
};

}  // namespace hy_wristlog::fuzz
