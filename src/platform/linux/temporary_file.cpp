#include "platform/linux/temporary_file.h"

#include <array>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace hy_wristlog::platform {
namespace {

std::string randomName() {
  std::array<unsigned char, 8> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) raiseSystemError();
  std::string name = ".wristlog-";
  for (const unsigned char byte : bytes) {
    constexpr std::string_view Digits = "0123456789abcdef";
    name += Digits[byte >> 4U];
    name += Digits[byte & 15U];
  }
  return name;
}

}  // namespace

TemporaryFile::TemporaryFile(int folder, mode_t mode) : folder_(folder), name_(randomName()) {
  constexpr mode_t UsualMode = 0644;
  file_ = Descriptor{::openat(folder, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                              mode != 0 ? mode : UsualMode)};
  if (!file_) raiseSystemError();
  if (mode != 0) ::fchmod(file_.get(), mode);
}

TemporaryFile::~TemporaryFile() {
  if (!name_.empty()) ::unlinkat(folder_, name_.c_str(), 0);
}

void TemporaryFile::write(std::string_view content) {
  while (!content.empty()) {
    const ssize_t count = ::write(file_.get(), content.data(), content.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) raiseSystemError();
    content.remove_prefix(static_cast<std::size_t>(count));
  }
}

void TemporaryFile::settle() {
  if (::fsync(file_.get()) != 0) raiseSystemError();
}

void TemporaryFile::rename(const std::string& name) {
  settle();
  if (::renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) raiseSystemError();
  name_.clear();
  ::fsync(folder_);
}

bool TemporaryFile::renameUnlessTaken(const std::string& name) {
  settle();
  if (::renameat2(folder_, name_.c_str(), folder_, name.c_str(), RENAME_NOREPLACE) != 0) {
    if (errno == EEXIST) return false;
    // RENAME_NOREPLACE is unsupported here, so fall back to a plain rename, which replaces.
    if (errno != EINVAL && errno != ENOSYS) raiseSystemError();
    rename(name);
    return true;
  }
  name_.clear();
  ::fsync(folder_);
  return true;
}

}  // namespace hy_wristlog::platform
