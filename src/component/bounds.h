#pragma once

#include "component/arrays.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "pendrel/Pendrel.h"

/// Whether a series is one that the recording has no values for.
namespace hy_wristlog::component {

template <class Series>
bool isBelowZero(const Class_VardenLogger& logger, const Series& series) {
  return series.empty() && logger.Get_Samples() > 0;
}

inline bool isBelowZero(const Class_Pendrel& logger, const StepsSeries& steps) {
  return steps.size() == 1 && isEmpty(steps[0]) &&
         logger.inside().record.Get_DeviceType() != KR_PENDREL_CRC_STEPS;
}
template <class Series>
bool isBelowZero(const Class_Pendrel&, const Series&) {
  return false;
}

}  // namespace hy_wristlog::component
