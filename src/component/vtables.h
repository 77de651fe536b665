#pragma once

#include "hy_wristlog/component.h"

namespace hy_wristlog::component {

extern const HyDispatchVtable DispatchVtable;
extern const HyConnectionPointContainerVtable ContainerVtable;
extern const HyProvideClassInfoVtable ClassInfoVtable;
extern const HySeriesReaderVtable SeriesReaderVtable;

}  // namespace hy_wristlog::component
