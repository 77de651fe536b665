#include "platform/linux/linux_files.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/system_io.h"
#include "platform/linux/temporary_file.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t LongestFile = std::size_t{512} << 20;
constexpr mode_t AnyWriteBit = S_IWUSR | S_IWGRP | S_IWOTH;

struct SplitPath {
  std::string Folder, Name;
};

SplitPath split(const std::string& path) {
  if (path.empty()) raiseSystemError(ENOENT);
  if (path.find('\0') != std::string::npos) raiseSystemError(EINVAL);
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return {".", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
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

Descriptor openFolder(const std::string& path) {
  Descriptor folder{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  // A folder that may be written to but not listed.
  if (!folder && errno == EACCES) folder = Descriptor{::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
  if (!folder) raiseSystemError();
  return folder;
}

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

std::string LinuxFiles::read(const std::string& path) {
  const int links = liesInFolderForEveryone(path) ? O_NOFOLLOW : 0;
  const Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | links)};
  if (!file) raiseSystemError();
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) raiseSystemError();
  if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
  if (!S_ISREG(status.st_mode)) raiseSystemError(EINVAL);
  return readToEnd(file.get(), LongestFile);
}

std::unique_ptr<NewFile> LinuxFiles::create(const std::string& path) {
  const SplitPath parts = split(path);
  if (parts.Name.empty() || parts.Name == "." || parts.Name == "..") raiseSystemError(EISDIR);
  return std::make_unique<LinuxNewFile>(parts);
}

bool LinuxFiles::remove(const std::string& path) {
  split(path);
  if (::unlink(path.c_str()) == 0) return true;
  if (errno != ENOENT && errno != ENOTDIR) raiseSystemError();
  return false;
}

void LinuxFiles::makeFolder(const std::string& path, bool forEveryone) {
  split(path);
  if (::mkdir(path.c_str(), forEveryone ? 0700 : 0777) != 0) {
    struct stat status {};
    const int error = errno;
    if (error == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return;
    raiseSystemError(error);
  }
  if (!forEveryone) return;
  const Descriptor folder{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
  if (!folder || ::fchmod(folder.get(), S_ISVTX | 0777) != 0) raiseSystemError();
}

}  // namespace hy_wristlog::platform
