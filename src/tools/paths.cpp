#include "tools/paths.h"

#include <algorithm>
#include <cerrno>

#include "base/faults.h"

namespace hy_wristlog {
namespace {

platform::FileKind kindOf(const std::string& path) {
  try {
    return platform::current().files().state(path).Kind;
  } catch (const platform::SystemError&) {
    return platform::FileKind::Other;
  }
}

bool isFolderMissing(const std::string& path) {
  const auto separator = path.find_last_of('/');
  if (separator == std::string::npos || separator == 0) return false;
  return kindOf(path.substr(0, separator)) != platform::FileKind::Folder;
}

std::int32_t faultNumber(std::int32_t error, const std::string& path) {
  switch (error) {
    case ENOENT:
      return isFolderMissing(path) ? fault::PathNotFound : fault::FileNotFound;
    case ENOTDIR:
      return fault::PathNotFound;
    case ENOSPC:
    case EDQUOT:
      return fault::DiskFull;
    case EACCES:
    case EPERM:
    case EROFS: {
      const auto kind = kindOf(path);
      const bool usable = kind == platform::FileKind::File || kind == platform::FileKind::Missing;
      return usable ? fault::PermissionDenied : fault::PathFileAccess;
    }
    case EBUSY:
      return fault::PermissionDenied;
    default:
      return fault::PathFileAccess;
  }
}

std::string reasonOf(std::int32_t error) {
  if (error == ELOOP) return "a symbolic link that is not followed here";
  if (error == EBUSY) return "another program keeps its folder locked";
  return platform::current().environment().errorText(error);
}

}  // namespace

std::string nativePath(std::string_view path) {
  std::string native(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

std::string joinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && !isPathSeparator(path.back())) path += pathSeparatorOf(folder);
  return path.append(name);
}

bool belongsToUser(std::string_view folder) {
  platform::Environment& environment = platform::current().environment();
  constexpr std::int32_t Documents = 5, UserData = 26;
  for (std::string own : {environment.specialFolder(UserData), environment.specialFolder(Documents),
                          environment.variable("HOME").value_or("")}) {
    if (!own.ends_with('/')) own += '/';
    if (own != "/" && folder.starts_with(own)) return true;
  }
  return false;
}

void raiseFileFault(const platform::SystemError& error, const std::string& path) {
  std::string detail = path;
  const std::string reason = reasonOf(error.Number);
  if (!reason.empty()) detail += " (" + reason + ")";
  fault::raise(faultNumber(error.Number, path), detail);
}

}  // namespace hy_wristlog
