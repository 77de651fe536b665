#include "simulate/state_file.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "hy_wristlog/failure.h"
#include "platform/linux/system_io.h"
#include "platform/platform.h"
#include "recording/signals_held.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

[[noreturn]] void raise(std::int32_t number, const std::string& words) {
  throw hy_wristlog::Failure(number, "wristlog", words);
}

[[noreturn]] void raise(const std::string& path, int error) {
  raise(hy_wristlog::FailureNumber::PathFileAccess,
        path + ": " + platform::current().environment().errorText(error));
}

}  // namespace

/// A file beside the state's, since that one is replaced by each saving. It is removed with the lock.
class StateFile::Lock {
 public:
  explicit Lock(const std::string& state) : path_(state + ".lock") {
    do {
      file_ = platform::Descriptor{::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)};
      if (!file_) raise(path_, errno);
      if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0)
        raise(hy_wristlog::FailureNumber::PermissionDenied,
              state + " is in use: another 'wristlog simulate' serves the logger in it");
    } while (!isInPlace());
  }
  ~Lock() { ::unlink(path_.c_str()); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  /// Whether the former holder has not removed it between opening and locking.
  bool isInPlace() const {
    struct stat held {
    }, there{};
    return ::fstat(file_.get(), &held) == 0 && ::stat(path_.c_str(), &there) == 0 &&
           held.st_ino == there.st_ino && held.st_dev == there.st_dev;
  }

  std::string path_;
  platform::Descriptor file_;
};

StateFile::StateFile(const std::string& path) : path_(path), lock_(std::make_unique<Lock>(path)) {}

StateFile::~StateFile() = default;

std::optional<std::string> StateFile::read() const {
  constexpr std::size_t Longest = std::size_t{64} << 20;
  try {
    return platform::current().files().readUpTo(Longest, path_);
  } catch (const platform::SystemError& error) {
    if (error.Number == ENOENT) return std::nullopt;
    raise(path_, error.Number);
  }
}

void StateFile::write(const std::string& text) const {
  const SignalsHeld held;
  try {
    platform::current().files().write(path_, text);
  } catch (const platform::SystemError& error) {
    raise(path_, error.Number);
  }
}

}  // namespace wristlog
