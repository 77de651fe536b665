#pragma once

#include "component/members.h"

/// Descriptions of the classes for hosts, made from their tables. Each has a reference for the caller.
namespace hy_wristlog::component {

HyTypeInfo* interfaceInfo(const ClassTable& table);
HyTypeInfo* classInfo(const ClassTable& table);

}  // namespace hy_wristlog::component
