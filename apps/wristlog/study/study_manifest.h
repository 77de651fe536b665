#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "recording/json.h"
#include "study/study_files.h"

namespace wristlog {

struct InputFile {
  std::string Name;
  std::int64_t Size = 0, Changed = 0;  ///< bytes; nanoseconds on the file system's clock
  std::string Digest;                  ///< SHA-256 of its bytes, in hexadecimal
};

/// The files of the recording in `folder`, with the digests of `former` where size and time are the same.
/// Raises PathFileAccess for a file that cannot be read.
std::vector<InputFile> inputFilesOf(const std::string& folder, const std::vector<InputFile>& former);
/// Whether they have the same names and bytes.
bool haveSameBytes(const std::vector<InputFile>& files, const std::vector<InputFile>& others);
/// The file of the recording's own bytes, raw.bin or raw.partial.bin.
InputFile rawFileOf(const std::vector<InputFile>& files);

/// What a study knows of a recording that it has decoded.
struct StudiedRecording {
  std::string Version;  ///< of the program that decoded it
  std::vector<InputFile> Files;
  Json Row;  ///< without copies and conflicts
  /// The sizes of its partition; none where that is another recording's, or nobody's.
  std::optional<PartitionSizes> Written;

  Partition partition() const { return Partition::of(Row); }
};

/// What was studied, kept beside it, so that a later study does only what changed.
struct StudyManifest {
  std::string Input;               ///< the folder that was studied, seen from the output folder
  std::set<Partition> Partitions;  ///< all that studies have written here and not removed
  std::map<std::string, StudiedRecording> Recordings;  ///< by their folders

  std::string text() const;
  /// None for a text that is no manifest.
  static std::optional<StudyManifest> from(const std::string& text);
};

}  // namespace wristlog
