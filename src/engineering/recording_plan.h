#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hy_wristlog/enumerations.h"

/// What can be told of a recording before a logger is asked to make it.
namespace hy_wristlog::engineering {

/// A recording as `Class_Main::Configure` is asked for it. Dates are local.
struct RecordingPlan {
  enmLoggerPointer Model = LggrPntr_None;
  enmVardenLoggingMode Mode = VardenMode_Unknown;
  std::int32_t EpochLength = 0;  ///< seconds
  std::string Zone;              ///< an abbreviation of the catalogue; empty: the machine's zone
  bool Daylight = false;
  std::optional<double> SetTime, Start, End;  ///< none: now, as soon as possible, never
};

/// 0 with no words, or the return code that a plan ends with, and why in words; those are empty where the
/// code tells enough.
struct PlanVerdict {
  std::int32_t Code = 0;
  std::string Why;
};

/// Whether a logger can make the recording as planned. Configure notices some of these only after it has
/// stopped the logger, and moves others to what the logger can do. A start and an end are given a minute
/// more, for the time until the logger is told. Raises NoZones as the catalogue does.
PlanVerdict verdictOn(const RecordingPlan& plan);

/// Why a moment is none of a zone's: its clocks skip it. Empty for all others, and for an unknown zone.
std::string skippedBy(const std::string& zone, bool daylight, double local);

}  // namespace hy_wristlog::engineering
