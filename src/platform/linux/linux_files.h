#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// Files of the machine. In folders that everybody may write to (mode 1777) links are not followed. Writing
/// puts a new file in the old one's place and refuses links (ELOOP), folders (EISDIR), read-only files
/// (EACCES) and what is no plain file (EINVAL). Reading takes up to 512 MiB (EFBIG).
class LinuxFiles final : public Files {
 public:
  FileState state(const std::string& path) override;
  std::string read(const std::string& path) override;
  std::unique_ptr<NewFile> create(const std::string& path) override;
  bool remove(const std::string& path) override;
  void makeFolder(const std::string& path, bool forEveryone) override;
};

}  // namespace hy_wristlog::platform
