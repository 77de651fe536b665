#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"

namespace wristlog {

/// Where a saved recording lies: a folder with config.ini and raw.bin, or the two files.
struct RecordingPlace {
  std::string Folder, ConfigFile, RawFile;

  std::string config() const { return Folder.empty() ? ConfigFile : Folder + "/config.ini"; }
  std::string raw() const { return Folder.empty() ? RawFile : Folder + "/raw.bin"; }
  /// None for a place without names.
  std::vector<std::string> files() const;
};

/// The logger with its configuration and raw data, not decoded. Raises 53, 75 and what damaged files raise;
/// 11503 for a recording without bytes.
std::shared_ptr<hy_wristlog::Class_VardenLogger> openRecording(const RecordingPlace& place);

struct DecodedRecording {
  std::shared_ptr<hy_wristlog::Class_VardenLogger> Logger;
  hy_wristlog::enmDecodeResult Result = hy_wristlog::Decode_InputError;
  bool LowBattery = false;
};

/// Raises the same and what decoding raises; failures name the files that they are about.
DecodedRecording decodeRecording(const RecordingPlace& place, bool diagnostic);

}  // namespace wristlog
