#pragma once

#include <memory>
#include <string>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// Locks the folder for a change of one of its files. While somebody else holds it, waits some seconds of the
/// thread's clock at most; then raises SystemError EBUSY.
std::unique_ptr<FolderLock> lockFolder(Files& files, const std::string& folder);

/// The folder that a file's path names; "." when it names none.
std::string folderOf(const std::string& path);

}  // namespace hy_wristlog::platform
