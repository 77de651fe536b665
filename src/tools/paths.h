#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

/// Paths as the library writes them ("\" or "/" between folders) and as the system wants them.
namespace hy_wristlog {

inline bool isPathSeparator(char c) { return c == '\\' || c == '/'; }

/// The separator for parts of this path: "/" when it starts with one.
inline char pathSeparatorOf(std::string_view path) { return path.starts_with('/') ? '/' : '\\'; }

/// The path with "/" between its folders, for the system.
std::string nativePath(std::string_view path);

/// The folder, one separator and the name.
std::string joinPath(std::string_view folder, std::string_view name);

/// Whether a folder (with "/" at its end) is private to the user: below the home or the folders 5 and 26.
bool belongsToUser(std::string_view folder);

/// Raises a system error as its usual fault: 53 no file, 76 no folder, 61 disk full, 70 permission denied, 75
/// anything else. The description names the path and the system's reason.
[[noreturn]] void raiseFileFault(const platform::SystemError& error, const std::string& path);

/// The result of `action`. System errors in it are raised as faults of this path.
template <class Action>
auto withFileFaults(const std::string& path, Action&& action) {
  try {
    return action();
  } catch (const platform::SystemError& error) {
    raiseFileFault(error, path);
  }
}

}  // namespace hy_wristlog
