#pragma once

#include "hy_wristlog/component.h"

namespace hy_wristlog::component {

/// Ends a call from outside with its result code.
struct Refusal {
  HyResult Result;
};

}  // namespace hy_wristlog::component
