#pragma once

#include "base/inside.h"
#include "component/arrays.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "pendrel/Pendrel.h"

/// Which series a host gets as one empty element with both bounds -1: those that the recording has no values
/// for. The rule depends on the property that is read, `Get`, since several properties have the same type.
namespace hy_wristlog::component {

template <auto Get>
constexpr bool IsPendrelSteps = false;
template <>
inline constexpr bool IsPendrelSteps<&Class_Pendrel::Get_StepsArray> = true;

template <auto Get, class Series>
bool isBelowZero(const Class_VardenLogger& logger, const Series& series) {
  return series.empty() && logger.Get_Samples() > 0;
}

template <auto Get, class Series>
bool isBelowZero(const Class_Main&, const Series&) {
  return false;
}

template <auto Get, class Series>
bool isBelowZero([[maybe_unused]] const Class_Pendrel& logger, [[maybe_unused]] const Series& series) {
  if constexpr (IsPendrelSteps<Get>)
    return series.size() == 1 && isEmpty(series[0]) &&
           Inside::of(logger).record.Get_DeviceType() != KR_PENDREL_CRC_STEPS;
  else
    return false;
}

}  // namespace hy_wristlog::component
