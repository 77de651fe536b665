#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session.h"

namespace wristlog {

/// The files of one recording in one folder: series.csv, events.csv, recording.json, and for decoding it
/// again raw.bin and config.ini. Each is written whole or not at all.
class RecordingFiles {
 public:
  RecordingFiles(std::string folder, bool overwrite) : folder_(std::move(folder)), overwrite_(overwrite) {}

  /// Makes the folder. Raises fault 58 when a file that would be written exists and may not be overwritten.
  void prepare() const;
  void write(hy_wristlog::Class_VardenLogger& logger, const Json& summary) const;
  /// Only what decoding again needs, for a recording that could not be decoded.
  void writeRaw(hy_wristlog::Class_VardenLogger& logger) const;
  std::vector<std::string> paths() const;

 private:
  void writeFile(const std::string& name, const std::string& content) const;
  std::string path(const std::string& name) const { return folder_ + "/" + name; }

  std::string folder_;
  bool overwrite_;
};

/// The facts of a recording in words: subject, configuration, battery, result.
Json summaryJson(hy_wristlog::Class_VardenLogger& logger, const hy_wristlog::Class_Subject* subject,
                 std::optional<hy_wristlog::enmDecodeResult> result, bool lowBattery);

}  // namespace wristlog
