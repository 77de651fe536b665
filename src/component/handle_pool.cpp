#include "component/handle_pool.h"

#include <mutex>
#include <utility>
#include <vector>

#include "component/apartment.h"

namespace hy_wristlog::component {
namespace {

/// So many released shells rest before one is used again.
constexpr std::size_t Resting = 4096;

struct Pool {
  std::mutex Mutex;
  std::vector<std::unique_ptr<Shell>> All;
  Shell* Oldest = nullptr;
  Shell* Youngest = nullptr;
  std::size_t Count = 0;
};

Pool& pool() {
  static Pool* const made = new Pool;
  // Shells that are in use when the library goes are left to those who use them.
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

Shell& takeShell() {
  Pool& shells = pool();
  const std::lock_guard lock(shells.Mutex);
  Shell* shell = nullptr;
  if (shells.Count > Resting) {
    shell = std::exchange(shells.Oldest, shells.Oldest->Next);
    --shells.Count;
  } else {
    shell = shells.All.emplace_back(std::make_unique<Shell>()).get();
  }
  shell->Next = nullptr;
  ++inUse();
  return *shell;
}

void giveBackShell(Shell& shell) noexcept {
  Pool& shells = pool();
  const std::lock_guard lock(shells.Mutex);
  shell.Next = nullptr;
  if (shells.Count == 0)
    shells.Oldest = &shell;
  else
    shells.Youngest->Next = &shell;
  shells.Youngest = &shell;
  ++shells.Count;
  --inUse();
}

}  // namespace hy_wristlog::component
