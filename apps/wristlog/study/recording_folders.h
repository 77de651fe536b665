#pragma once

#include <string>
#include <vector>

namespace wristlog {

struct UnreadableFolder {
  std::string Folder, Words;
};

/// Names are relative to the folder that was searched; "." is that one itself.
struct FoundRecordings {
  std::vector<std::string> Folders;  ///< in the order of their names
  std::vector<UnreadableFolder> Unreadable;
};

/// The files of a recording that its decoding depends on, in whichever family it was made.
inline constexpr const char* RecordedFiles[] = {"config.ini", "setup.txt", "raw.bin", "raw.partial.bin"};

/// Every folder at or below `root` that holds the bytes of a recording. Hidden folders and `leftOut` are not
/// searched, and neither is a link to a folder above `root`. A folder that links lead to is searched once,
/// and under its own name where it has one below `root`. Raises FileNotFound when `root` is no folder.
FoundRecordings recordingsBelow(const std::string& root, const std::string& leftOut);

}  // namespace wristlog
