#include "platform/linux/system_io.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/platform.h"

namespace hy_wristlog::platform {

void raiseSystemError() { raiseSystemError(errno); }

void raiseSystemError(int number) { throw SystemError{number}; }

std::string readToEnd(int fd, std::size_t limit) {
  constexpr std::size_t Piece = 65536;
  std::string content;
  struct stat status {};
  if (::fstat(fd, &status) == 0 && status.st_size > 0) {
    if (static_cast<std::size_t>(status.st_size) > limit) raiseSystemError(EFBIG);
    content.reserve(static_cast<std::size_t>(status.st_size) + Piece);
  }
  std::size_t used = 0;
  for (;;) {
    content.resize(used + Piece);
    const ssize_t count = ::read(fd, content.data() + used, content.size() - used);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) raiseSystemError();
    used += static_cast<std::size_t>(count);
    if (used > limit) raiseSystemError(EFBIG);
    if (count == 0) break;
  }
  content.resize(used);
  return content;
}

std::string readFile(const std::string& path, std::size_t limit) {
  const Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) raiseSystemError();
  if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
  if (!S_ISREG(status.st_mode)) raiseSystemError(EINVAL);
  return readToEnd(file.get(), limit);
}

bool fileExists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

std::optional<std::string> readSmallFile(const std::string& path, std::size_t limit) {
  try {
    return readFile(path, limit);
  } catch (const SystemError&) {
    return std::nullopt;
  }
}

std::optional<std::string> environmentVariable(std::string_view name) {
  const char* value = std::getenv(std::string{name}.c_str());
  if (value == nullptr) return std::nullopt;
  return std::string{value};
}

std::string printable(std::string_view text) {
  std::string result{text};
  for (char& c : result)
    if (static_cast<unsigned char>(c) < 32 || c == 127) c = '?';
  return result;
}

}  // namespace hy_wristlog::platform
