#pragma once

#include "component/members.h"

namespace hy_wristlog::component {

/// Makes an object of a class that belongs to the calling thread.
HyResult createInstance(const ClassTable& table, HyUnknown* outer, const HyGuid* interfaceId,
                        void** object) noexcept;

}  // namespace hy_wristlog::component
