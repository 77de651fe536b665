#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "hy_wristlog/failure.h"
#include "recording/json.h"
#include "study/recording_folders.h"

namespace wristlog {

struct StudyOptions {
  std::string Folder, Out;
  std::size_t Jobs = 1;
  bool Force = false;  ///< decode all again, and take an output folder that is not this study's
};

/// What a study has done. Folders of recordings are relative to the folder that was studied.
struct StudyResult {
  std::vector<Json> Rows;  ///< of the table of recordings
  std::size_t Found = 0, Decoded = 0, Unchanged = 0, Failed = 0;
  std::vector<std::string> Removed;  ///< partitions of an earlier study that have no recording now
  /// What cannot be read now. Recordings there that an earlier study has met stay as they were.
  std::vector<UnreadableFolder> Unreadable;
  std::vector<std::string> Strangers;  ///< files in series/ and events/ that no study has written
  bool Stopped = false;                ///< before all was decoded; the table is as it was
};

struct StudyEvents {
  std::function<void(std::size_t done, std::size_t found)> Progress;  ///< one call at a time, any thread
  std::function<bool()> IsStopped;  ///< asked in the calling thread, between recordings
};

/// Decodes every recording below a folder, several at once, and writes their table, series and events. What
/// is as an earlier study into the same folder has met it is not done again. Raises FileNotFound when there
/// is no folder or no recording; InvalidCall for an output folder above the input; FileExists for an output
/// folder with other content; PathFileAccess when the output cannot be written, or another study is writing
/// there; NoZones and OutOfMemory when the machine lacks what decoding needs.
StudyResult study(const StudyOptions& options, const StudyEvents& events);

}  // namespace wristlog
