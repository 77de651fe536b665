#pragma once

#include <string>
#include <string_view>

#include <sys/types.h>

#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {

/// A new file that disappears again unless it is given its final name in its folder. Mode 0 means 0644 less
/// the user's mask; other modes hold whatever the mask. Members raise SystemError.
class TemporaryFile {
 public:
  TemporaryFile(int folder, mode_t mode);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  /// Adds all of it.
  void write(std::string_view content);
  /// Gives the file its name, after everything is on the disk.
  void rename(const std::string& name);
  /// False when the name is taken.
  bool renameUnlessTaken(const std::string& name);

 private:
  void settle();

  int folder_;
  std::string name_;
  Descriptor file_;
};

}  // namespace hy_wristlog::platform
