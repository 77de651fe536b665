#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "picture/recording.h"
#include "platform/platform.h"
#include "recording/decoded_recording.h"
#include "recording/json.h"

namespace wristlog {

/// The report of a recording, or of a part of one, kept beside it.
inline constexpr const char *ReportName = "report.csv", *PartReportName = "report.partial.csv";

/// The files of one recording in one folder: series.csv, events.csv, recording.json, the codebook of these
/// three datapackage.json, the pictures actogram.svg and report.html, and for decoding it again raw.bin and
/// config.ini. Of a part of a recording the first two and the bytes have names of their own, with "partial"
/// in them. A Pendrel's has no events, and setup.txt for people. Each is written whole or not at all.
class RecordingFiles {
 public:
  enum class Part : std::uint8_t { Everything, Pictures };

  /// With `Part::Pictures` only the two pictures are checked and written.
  RecordingFiles(std::string folder, bool overwrite, Part part = Part::Everything);
  /// For files of other names, each written by `writeFile`.
  RecordingFiles(std::string folder, bool overwrite, std::vector<std::string> names)
      : folder_(std::move(folder)), overwrite_(overwrite), names_(std::move(names)) {}

  /// To be called before the work: tries whether all can be written. Raises FileExists when a file that would
  /// be written exists and may not be overwritten, PathFileAccess when the folder cannot be used, or when
  /// something that is no plain file (a link, say) has the name of one. The folder is made with its first
  /// file.
  void prepare() const;
  /// Allows a part of a recording that an earlier retrieval has left to be replaced by more of the same.
  void replacePart() { replacesPart_ = holdPart(); }
  /// The same for a demo, which may overwrite a folder with nothing but another demo's files.
  void prepareForDemo();
  /// Writes what decoding again needs: the bytes and config.ini. Raises FileExists when the folder holds
  /// another recording that may not be overwritten.
  void writeRaw(const hy_wristlog::engineering::SavedRecording& recording) const;
  /// Writes series, events, facts and codebook.
  void writeDecoded(const DecodedRecording& recording, const Json& summary) const;
  void writePictures(const picture::PlottedRecording& plot) const;
  /// Writes the pictures, after the other files. A failure says that those are safe.
  void writePictures(const DecodedRecording& recording) const;
  /// Raises OutOfRange when a recording without epochs would replace existing files.
  void requireEpochs(const DecodedRecording& recording) const;
  /// Whether one of the files exists.
  bool holdAny() const;
  /// Whether they are those of a shorter part of the same recording.
  bool holdPartOf(const hy_wristlog::engineering::SavedRecording& recording) const;
  /// Whether they are those of the same recording, with at least as many bytes.
  bool holdAsMuchOf(const hy_wristlog::engineering::SavedRecording& recording) const;
  bool mayOverwrite() const { return overwrite_; }
  const std::string& folder() const { return folder_; }
  /// The same files in a folder that does not exist yet: FOLDER-2, FOLDER-3, ...
  RecordingFiles beside() const;
  void writeFile(const std::string& name, const std::string& content) const;
  /// Writes a file whose content is made while it is written.
  void writeFile(const std::string& name,
                 const std::function<void(hy_wristlog::platform::NewFile&)>& addContent) const;
  /// Writes session.log, session-2.log, ..., the first that does not exist, and returns its path.
  std::string writeSessionLog(const std::string& text) const;
  std::vector<std::string> paths() const;
  /// Those of the paths where there is a file.
  std::vector<std::string> existing() const;
  /// Raises FileExists for a folder with a whole recording, also when files may be overwritten.
  void requireNoWhole() const;

 private:
  bool isFromDemo() const;
  /// Locks the folder before its first file is written, so that no other program writes a recording there.
  /// Raises FileExists when one has come since `prepare`.
  void claim(bool mayReplace) const;
  bool holdPart() const;
  /// The missing ones of the folder and those above it, the uppermost first.
  std::vector<std::string> missingFolders() const;
  std::string path(const std::string& name) const { return folder_ + "/" + name; }

  std::string folder_;
  bool overwrite_, replacesPart_ = false;
  std::vector<std::string> names_;
  mutable std::shared_ptr<hy_wristlog::platform::FolderLock> claim_;
};

/// The value of "made_by" in a demo's recording.json.
inline constexpr const char* MadeByDemo = "wristlog demo";

/// The facts of a recording in words: subject, configuration, battery, result.
Json summaryJson(const DecodedRecording& recording);

}  // namespace wristlog
