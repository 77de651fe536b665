#include "platform/linux/linux_files.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/folder_lock.h"
#include "platform/linux/system_io.h"
#include "platform/linux/temporary_file.h"

namespace hy_wristlog::platform {
namespace {

constexpr mode_t AnyWriteBit = S_IWUSR | S_IWGRP | S_IWOTH;

struct SplitPath {
  std::string Folder, Name;
};

SplitPath split(const std::string& path) {
  if (path.empty()) raiseSystemError(ENOENT);
  if (path.find('\0') != std::string::npos) raiseSystemError(EINVAL);
  return {folderOf(path), path.substr(path.rfind('/') + 1)};
}

bool isForEveryone(const struct stat& folder) {
  return (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
}

bool liesInFolderForEveryone(const std::string& path) {
  struct stat folder {};
  return ::stat(split(path).Folder.c_str(), &folder) == 0 && isForEveryone(folder);
}

bool isReadOnly(int folder, const char* name, const struct stat& status) {
  return (status.st_mode & AnyWriteBit) == 0 || ::faccessat(folder, name, W_OK, AT_EACCESS) != 0;
}

/// Opens the subfolder `name`. Raises ELOOP for a link in a folder that everybody may write to, ENOTDIR for
/// what is no folder.
Descriptor enterFolder(const Descriptor& folder, const std::string& name) {
  struct stat status {};
  if (::fstat(folder.get(), &status) != 0) raiseSystemError();
  const int links = isForEveryone(status) ? O_NOFOLLOW : 0;
  Descriptor entered{::openat(folder.get(), name.c_str(), O_PATH | O_CLOEXEC | links)};
  if (!entered || ::fstat(entered.get(), &status) != 0) raiseSystemError();
  if (S_ISLNK(status.st_mode)) raiseSystemError(ELOOP);
  if (!S_ISDIR(status.st_mode)) raiseSystemError(ENOTDIR);
  return entered;
}

/// Opens a folder whose content is to be changed, level by level, so that each level's links are checked.
Descriptor openFolder(const std::string& path) {
  Descriptor folder{::open(path.starts_with('/') ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC)};
  if (!folder) raiseSystemError();
  for (std::size_t begin = 0; begin < path.size();) {
    const auto end = std::min(path.find('/', begin), path.size());
    if (end > begin) folder = enterFolder(folder, path.substr(begin, end - begin));
    begin = end + 1;
  }
  // The path descriptor is enough for a folder that may be written to but not listed.
  Descriptor listed{::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  return listed ? std::move(listed) : std::move(folder);
}

class HeldFolder final : public FolderLock {
 public:
  explicit HeldFolder(Descriptor folder) : folder_(std::move(folder)) {}

 private:
  Descriptor folder_;
};

/// The mode for the new file; raises when it must not be written.
mode_t modeOfTarget(int folder, const std::string& name) {
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) raiseSystemError();
    return 0;
  }
  if (S_ISLNK(status.st_mode)) raiseSystemError(ELOOP);
  if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
  if (!S_ISREG(status.st_mode)) raiseSystemError(EINVAL);
  if (isReadOnly(folder, name.c_str(), status)) raiseSystemError(EACCES);
  return status.st_mode & 0777;
}

class LinuxNewFile final : public NewFile {
 public:
  explicit LinuxNewFile(const SplitPath& path)
      : name_(path.Name),
        folder_(openFolder(path.Folder)),
        file_(folder_.get(), modeOfTarget(folder_.get(), name_)) {}

 protected:
  void write(std::string_view piece) override { file_.write(piece); }
  void takePlace() override { file_.rename(name_); }

 private:
  std::string name_;
  Descriptor folder_;
  TemporaryFile file_;
};

}  // namespace

FileState LinuxFiles::state(const std::string& path) {
  const SplitPath parts = split(path);
  FileState result;
  result.Hidden = parts.Name.starts_with('.') && parts.Name != "." && parts.Name != "..";
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) raiseSystemError();
    return {};
  }
  struct stat target {};
  if (S_ISLNK(status.st_mode) && !liesInFolderForEveryone(path) && ::stat(path.c_str(), &target) == 0)
    status = target;
  result.Kind = S_ISREG(status.st_mode)   ? FileKind::File
                : S_ISDIR(status.st_mode) ? FileKind::Folder
                                          : FileKind::Other;
  if (!S_ISLNK(status.st_mode)) result.ReadOnly = isReadOnly(AT_FDCWD, path.c_str(), status);
  return result;
}

std::string LinuxFiles::readUpTo(std::size_t most, const std::string& path) {
  const int links = liesInFolderForEveryone(path) ? O_NOFOLLOW : 0;
  const Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | links)};
  if (!file) raiseSystemError();
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) raiseSystemError();
  if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
  if (!S_ISREG(status.st_mode)) raiseSystemError(EINVAL);
  return readToEnd(file.get(), most);
}

std::unique_ptr<NewFile> LinuxFiles::create(const std::string& path) {
  const SplitPath parts = split(path);
  if (parts.Name.empty() || parts.Name == "." || parts.Name == "..") raiseSystemError(EISDIR);
  return std::make_unique<LinuxNewFile>(parts);
}

bool LinuxFiles::remove(const std::string& path) {
  const SplitPath parts = split(path);
  try {
    const Descriptor folder = openFolder(parts.Folder);
    if (::unlinkat(folder.get(), parts.Name.c_str(), 0) != 0) raiseSystemError();
    return true;
  } catch (const SystemError& error) {
    if (error.Number != ENOENT && error.Number != ENOTDIR) throw;
    return false;
  }
}

void LinuxFiles::makeFolder(const std::string& path, bool forEveryone) {
  constexpr mode_t Own = 0700, Readable = 0755, Everyones = S_ISVTX | 0777;
  const std::string named = path.substr(0, path.find_last_not_of('/') + 1);
  const SplitPath parts = split(named);
  const Descriptor folder = openFolder(parts.Folder);
  if (::mkdirat(folder.get(), parts.Name.c_str(), forEveryone ? Own : Readable) != 0) {
    if (errno != EEXIST) raiseSystemError();
    try {
      enterFolder(folder, parts.Name);
      return;
    } catch (const SystemError& error) {
      raiseSystemError(error.Number == ENOTDIR ? EEXIST : error.Number);
    }
  }
  if (!forEveryone) return;
  const Descriptor made{
      ::openat(folder.get(), parts.Name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
  if (!made || ::fchmod(made.get(), Everyones) != 0) raiseSystemError();
}

std::unique_ptr<FolderLock> LinuxFiles::tryLockFolder(const std::string& path) {
  Descriptor folder{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  while (folder && ::flock(folder.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) return nullptr;
    if (errno != EINTR) folder.close();
  }
  return std::make_unique<HeldFolder>(std::move(folder));
}

}  // namespace hy_wristlog::platform
