#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

/// Paths as the library writes them ("\" or "/" between folders) and as the system wants them.
namespace hy_wristlog {

inline bool isPathSeparator(char c) { return c == '\\' || c == '/'; }

/// What puts parts of this path together: "/" when it starts with one.
inline char pathSeparatorOf(std::string_view path) { return path.starts_with('/') ? '/' : '\\'; }

/// The path with "/" between its folders, for the system.
std::string nativePath(std::string_view path);

/// The folder and, behind one separator, the name.
std::string joinPath(std::string_view folder, std::string_view name);

/// Whether a folder (with "/" at its end) lies where the user keeps what is nobody else's business: below the
/// home or the folders 5 and 26.
bool belongsToUser(std::string_view folder);

/// Raises what the system says of a path as its usual fault: 53 no file, 76 no folder, 61 disk full, 70 a
/// file that may not be used, 75 anything else. The description names the path and the system's reason.
[[noreturn]] void raiseFileFault(const platform::SystemError& error, const std::string& path);

/// The result of `action`; system errors in it are raised as faults of this path.
template <class Action>
auto withFileFaults(const std::string& path, Action&& action) {
  try {
    return action();
  } catch (const platform::SystemError& error) {
    raiseFileFault(error, path);
  }
}

}  // namespace hy_wristlog
