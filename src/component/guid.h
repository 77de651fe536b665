#pragma once

#include <cstring>

#include "hy_wristlog/component.h"

inline bool operator==(const HyGuid& a, const HyGuid& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
