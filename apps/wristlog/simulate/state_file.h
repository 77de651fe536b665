#pragma once

#include <memory>
#include <optional>
#include <string>

namespace wristlog {

/// The file in which a served logger's state is kept. It is locked as long as this lives, so that two servers
/// do not have one logger.
class StateFile {
 public:
  /// Raises Failure PermissionDenied while another server has the file, PathFileAccess when it cannot be
  /// locked.
  explicit StateFile(const std::string& path);
  ~StateFile();
  StateFile(const StateFile&) = delete;
  StateFile& operator=(const StateFile&) = delete;

  const std::string& path() const { return path_; }
  /// None when there is no file yet. Raises Failure PathFileAccess.
  std::optional<std::string> read() const;
  /// Replaces the file whole. Raises Failure PathFileAccess.
  void write(const std::string& text) const;

 private:
  class Lock;

  std::string path_;
  std::unique_ptr<Lock> lock_;
};

}  // namespace wristlog
