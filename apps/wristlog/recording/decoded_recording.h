#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engineering/saved_recording.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"

namespace wristlog {

/// The place of a saved recording: a folder with config.ini and raw.bin, or the two files.
struct RecordingPlace {
  std::string Folder, ConfigFile, RawFile;
  bool Unchecked = false;  ///< the bytes are taken even when they are not those of the configuration

  std::string config() const { return Folder.empty() ? ConfigFile : Folder + "/config.ini"; }
  std::string raw() const { return Folder.empty() ? RawFile : Folder + "/raw.bin"; }
  /// The files' paths; none for an empty place.
  std::vector<std::string> files() const;
};

/// Raises FileNotFound, PathFileAccess and what damaged files raise; OutOfRange for a recording without bytes
/// and for bytes that are not those of the configuration. With `Unchecked` such bytes cause only a warning on
/// standard error.
hy_wristlog::engineering::SavedRecording readRecording(const RecordingPlace& place);

/// The moment (UTC) that a recording is seen from: when it was retrieved or, where that is not known, when
/// its last epoch ended.
double momentOf(const hy_wristlog::engineering::SavedRecording& recording);

struct DecodedRecording {
  std::shared_ptr<hy_wristlog::Class_VardenLogger> Logger;
  hy_wristlog::enmDecodeResult Result = hy_wristlog::Decode_InputError;
  bool LowBattery = false;
  bool Unchecked = false;  ///< the bytes are not those that the configuration tells of
};

/// The decode result in words. For unchecked bytes it says only that nothing vouches for them.
std::string verdictOf(const DecodedRecording& recording);

/// To be called in a RecordingWorld. Raises what decoding raises.
DecodedRecording decoded(const hy_wristlog::engineering::SavedRecording& recording, bool diagnostic);
/// The same for a recording in files: failures name the files. Raises OutOfRange too when nothing can be
/// decoded.
DecodedRecording decoded(const hy_wristlog::engineering::SavedRecording& recording,
                         const RecordingPlace& place, bool diagnostic);

}  // namespace wristlog
