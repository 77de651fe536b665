#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// Files of the machine. In folders that everybody may write to (mode 1777) links to files are not followed,
/// nor links to folders where something is written, made or removed (ELOOP). Writing puts a new file in the
/// old one's place and refuses links (ELOOP), folders (EISDIR), read-only files (EACCES) and what is no plain
/// file (EINVAL). Longer files than wanted are EFBIG. What is new can be written to by its user alone.
class LinuxFiles final : public Files {
 public:
  FileState state(const std::string& path) override;
  std::string readUpTo(std::size_t most, const std::string& path) override;
  std::unique_ptr<NewFile> create(const std::string& path) override;
  bool remove(const std::string& path) override;
  void makeFolder(const std::string& path, bool forEveryone) override;
  /// Locks the folder itself: no lock file is left over, and the lock of a process that died is free. Gives a
  /// lock without effect where the folder or its file system takes none.
  std::unique_ptr<FolderLock> tryLockFolder(const std::string& path) override;
};

}  // namespace hy_wristlog::platform
