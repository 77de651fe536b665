#pragma once

#include <cstddef>

namespace hy_wristlog {

/// Bytes of the heap in use now, and at most since `restartHeapPeak`; all of this program's `new`.
std::size_t heapInUse();
std::size_t heapPeak();
void restartHeapPeak();

}  // namespace hy_wristlog
