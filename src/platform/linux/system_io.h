#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <unistd.h>

namespace hy_wristlog::platform {

/// Owns a file descriptor.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      close();
      fd_ = other.release();
    }
    return *this;
  }
  ~Descriptor() { close(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }
  void close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }

 private:
  int fd_ = -1;
};

/// Raises SystemError with the thread's errno.
[[noreturn]] void raiseSystemError();
[[noreturn]] void raiseSystemError(int number);

/// The content of an open file up to its end. Raises SystemError; EFBIG when there are more than `limit`
/// bytes.
std::string readToEnd(int fd, std::size_t limit);

/// The content of a regular file. Raises SystemError; EISDIR or EINVAL when it is none, EFBIG when it is
/// longer than `limit`. Never waits, as reading a pipe or a device would.
std::string readFile(const std::string& path, std::size_t limit);

/// Whether there is a file, a folder or a device of this name.
bool fileExists(const std::string& path);

/// The same as readFile, but none after a failure.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t limit);

std::optional<std::string> environmentVariable(std::string_view name);

/// A file name in an error text: control characters become "?".
std::string printable(std::string_view text);

}  // namespace hy_wristlog::platform
