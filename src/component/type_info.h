#pragma once

#include "component/members.h"

/// Descriptions of the classes for hosts, made from their tables. Each is given with a reference.
namespace hy_wristlog::component {

HyTypeInfo* interfaceInfo(const ClassTable& table);
HyTypeInfo* classInfo(const ClassTable& table);

}  // namespace hy_wristlog::component
