#pragma once

#include <algorithm>
#include <string>

#include "base/ascii.h"
#include "hy_wristlog/docks.h"

namespace hy_wristlog {

/// Whether `name` is one of the dock's names, in any case.
inline bool answersTo(const Dock& dock, const std::string& name) {
  return equalsIgnoringCase(dock.Name, name) ||
         std::any_of(dock.OtherNames.begin(), dock.OtherNames.end(),
                     [&](const std::string& other) { return equalsIgnoringCase(other, name); });
}

}  // namespace hy_wristlog
