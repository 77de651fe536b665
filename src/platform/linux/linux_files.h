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
  /// The folder itself carries the lock, so that nothing is left lying and a dead holder holds nothing. A
  /// folder or a file system that takes no locks does without.
  std::unique_ptr<FolderLock> tryLockFolder(const std::string& path) override;
};

}  // namespace hy_wristlog::platform
