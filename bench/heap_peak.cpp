#include "heap_peak.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t inUse = 0;
std::size_t peak = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  inUse += malloc_usable_size(memory);
  peak = std::max(peak, inUse);
  return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  inUse -= malloc_usable_size(memory);
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace hy_wristlog {

std::size_t heapInUse() { return inUse; }
std::size_t heapPeak() { return peak; }
void restartHeapPeak() { peak = inUse; }

}  // namespace hy_wristlog
