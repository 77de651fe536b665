#pragma once

#include <utility>

#include "errors/Procedure.h"

namespace hy_wristlog {

/// Runs the body of an operation of Class_Tools; its failures go through the dispatcher.
template <class Body>
auto guarded(const char* operation, Body&& body) {
  Procedure procedure{"Class_Tools", operation};
  return procedure.run(std::forward<Body>(body));
}

}  // namespace hy_wristlog
