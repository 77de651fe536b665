#include "heap_peak.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> inUse = 0;
std::atomic<std::size_t> peak = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  const std::size_t now = inUse += malloc_usable_size(memory);
  for (std::size_t most = peak; most < now && !peak.compare_exchange_weak(most, now);) {
  }
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
void restartHeapPeak() { peak = inUse.load(); }

}  // namespace hy_wristlog
