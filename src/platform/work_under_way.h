#pragma once

#include <cstdint>

namespace hy_wristlog::platform {

/// One of a world's objects: counts the calls that wait in it. While there are any, the thread keeps its
/// world.
struct WorkUnderWay {
  std::int32_t Count = 0;
};

}  // namespace hy_wristlog::platform
