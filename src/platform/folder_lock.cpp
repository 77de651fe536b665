#include "platform/folder_lock.h"

#include <cerrno>

namespace hy_wristlog::platform {

std::unique_ptr<FolderLock> lockFolder(Files& files, const std::string& folder) {
  constexpr double Patience = 5;  // seconds
  constexpr std::chrono::milliseconds Pause{5};
  Clock& clock = current().clock();
  const double deadline = clock.timer() + Patience;
  for (;;) {
    if (auto lock = files.tryLockFolder(folder)) return lock;
    if (clock.timer() > deadline) throw SystemError{EBUSY};
    clock.sleep(Pause);
  }
}

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace hy_wristlog::platform
