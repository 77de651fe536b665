#pragma once

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace hy_wristlog {

inline std::string contentOf(const std::string& path) {
  std::ifstream file{path, std::ios::binary};
  return std::string(std::istreambuf_iterator<char>{file}, std::istreambuf_iterator<char>{});
}

/// Makes the file and the folders above it; returns its path.
inline std::string putFile(const std::filesystem::path& path, std::string_view content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream{path, std::ios::binary} << content;
  return path.string();
}

/// A folder of its own that is gone after the test.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "wristlog-test-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }
  std::string path() const { return path_.string(); }
  std::string put(const std::string& name, std::string_view content) const {
    return putFile(path_ / name, content);
  }
  void link(const std::string& name, const std::string& target) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::filesystem::create_symlink(target, path_ / name);
  }

 private:
  std::filesystem::path path_;
};

/// Sets an environment variable, or unsets it, until the end of the block.
class Variable {
 public:
  Variable(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* former = std::getenv(name_.c_str())) former_ = former;
    set(value);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { set(former_); }

 private:
  void set(const std::optional<std::string>& value) const {
    value ? ::setenv(name_.c_str(), value->c_str(), 1) : ::unsetenv(name_.c_str());
    ::tzset();
  }

  std::string name_;
  std::optional<std::string> former_;
};

}  // namespace hy_wristlog
