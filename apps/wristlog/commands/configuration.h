#pragma once

#include <cstdint>
#include <string>

#include "commands/commands.h"
#include "hy_wristlog/enumerations.h"
#include "session/session.h"

namespace wristlog {

/// The end to go with a start when the user names none: the logger takes no start without an end. An end from
/// here on is as good as none.
inline constexpr const char* LatestEnd = "2038-01-01";

struct Configured {
  std::int32_t Code = 0;
  std::string Meaning;  ///< of the code, and what became of the logger
  float Battery = 0;    ///< days
  std::string SerialNumber;
};

/// Configures the logger in the session's dock, unless its recording would be lost: then, and when that
/// cannot be told, it raises FileExists. `options.Erase` configures it all the same.
Configured configure(Session& session, hy_wristlog::enmLoggerPointer model, const ConfigureOptions& options);

}  // namespace wristlog
