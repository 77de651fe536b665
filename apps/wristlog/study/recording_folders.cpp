#include "study/recording_folders.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "hy_wristlog/failure.h"
#include "recording/recording_files.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace fs = std::filesystem;

namespace {

class Search {
 public:
  Search(fs::path root, const std::string& leftOut) : root_(std::move(root)) {
    std::error_code none;
    seen_.insert(fs::weakly_canonical(fs::absolute(leftOut, none), none));
    for (fs::path above = fs::canonical(root_, none); above.has_relative_path(); above = above.parent_path())
      seen_.insert(above.parent_path());
  }

  FoundRecordings run() {
    enter(root_);
    // Links last, so that a folder that has a name of its own is found under it.
    while (!folders_.empty() || !links_.empty()) {
      auto& next = folders_.empty() ? links_ : folders_;
      const fs::path folder = next.back();
      next.pop_back();
      enter(folder);
    }
    std::sort(found_.Folders.begin(), found_.Folders.end());
    return std::move(found_);
  }

 private:
  std::string nameOf(const fs::path& folder) const { return folder.lexically_relative(root_).string(); }

  void enter(const fs::path& folder) {
    std::error_code error;
    const fs::path own = fs::canonical(folder, error);
    if (!error && !seen_.insert(own).second) return;
    bool isRecording = false;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      const std::string name = entry->path().filename();
      isRecording = isRecording || name == WholeRaw || name == PartRaw;
      std::error_code none;
      if (!name.starts_with('.') && entry->is_directory(none))
        (entry->is_symlink(none) ? links_ : folders_).push_back(entry->path());
    }
    if (error) found_.Unreadable.push_back({nameOf(folder), error.message()});
    if (isRecording) found_.Folders.push_back(nameOf(folder));
  }

  fs::path root_;
  std::set<fs::path> seen_;
  std::vector<fs::path> folders_, links_;
  FoundRecordings found_;
};

}  // namespace

FoundRecordings recordingsBelow(const std::string& root, const std::string& leftOut) {
  std::error_code none;
  if (!fs::is_directory(root, none))
    throw hw::Failure(hw::FailureNumber::FileNotFound, "wristlog", root + " is not a folder");
  return Search(fs::path(root + "/").lexically_normal(), leftOut).run();
}

}  // namespace wristlog
