#include "recording/required_files.h"

#include <algorithm>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;

namespace {

platform::FileKind kindOf(const std::string& path) {
  try {
    return platform::current().files().state(path).Kind;
  } catch (const platform::SystemError&) {
    return platform::FileKind::Missing;
  }
}

[[noreturn]] void refuse(const std::string& words) {
  throw hw::Failure(hw::FailureNumber::FileNotFound, "wristlog", words);
}

}  // namespace

void requireFiles(const RecordingPlace& place) {
  if (place.Folder.empty()) return;
  if (kindOf(place.Folder) != platform::FileKind::Folder) refuse(place.Folder + " is not a folder");
  const auto needed = place.files();
  const auto missing = std::find_if(needed.begin(), needed.end(), [](const std::string& path) {
    return kindOf(path) == platform::FileKind::Missing;
  });
  if (missing != needed.end())
    refuse(place.Folder + " holds no recording: " + missing->substr(place.Folder.size() + 1) +
           " is missing. Name a folder that 'wristlog retrieve' or 'wristlog decode' has written");
}

}  // namespace wristlog
