#include "component/handle_pool.h"

#include <mutex>
#include <utility>
#include <vector>

#include "component/apartment.h"

namespace hy_wristlog::component {
namespace {

/// How many released handles wait before the oldest is used again. Until then calls on it are refused.
constexpr std::size_t Resting = 4096;

struct Pool {
  std::mutex Mutex;
  std::vector<std::unique_ptr<Handle>> All;
  Handle* Oldest = nullptr;
  Handle* Youngest = nullptr;
  std::size_t Count = 0;
};

Pool& pool() {
  static Pool* const made = new Pool;
  // Handles that are still in use when the library is unloaded are left to those who use them.
  static const struct End {
    ~End() {
      if (inUse().load() == 0) delete made;
    }
  } end;
  return *made;
}

}  // namespace

std::atomic<std::int64_t>& inUse() {
  static std::atomic<std::int64_t> count = 0;
  return count;
}

Handle& takeHandle() {
  Pool& handles = pool();
  const std::lock_guard lock(handles.Mutex);
  Handle* handle = nullptr;
  if (handles.Count > Resting) {
    handle = std::exchange(handles.Oldest, handles.Oldest->Next);
    --handles.Count;
  } else {
    handle = handles.All.emplace_back(std::make_unique<Handle>()).get();
  }
  handle->Next = nullptr;
  ++inUse();
  return *handle;
}

void giveBackHandle(Handle& handle) noexcept {
  Pool& handles = pool();
  const std::lock_guard lock(handles.Mutex);
  handle.Next = nullptr;
  if (handles.Count == 0)
    handles.Oldest = &handle;
  else
    handles.Youngest->Next = &handle;
  handles.Youngest = &handle;
  ++handles.Count;
  --inUse();
}

}  // namespace hy_wristlog::component
