#pragma once

#include <string>

#include "recording/codebook.h"
#include "recording/decoded_recording.h"
#include "recording/recording_files.h"
#include "recording/recording_world.h"

namespace wristlog {

/// A saved recording of either family, read and decoded. The thread's world is the recording's as long as
/// this lives.
class OpenedRecording {
 public:
  /// Parts are accepted. `now` is a date that it is seen from; empty: its own moment. Raises what reading and
  /// decoding raise, and OutOfRange for a Pendrel's unless `family` is Every.
  OpenedRecording(const RecordingPlace& place, bool diagnostic, const std::string& now = {},
                  Family family = Family::Varden);

  const DecodedRecording& decoded() const { return decoded_; }
  /// Writes all of its files and gives its facts. Raises FileExists and OutOfRange for what may not be
  /// replaced, and PathFileAccess.
  Json write(const RecordingFiles& files) const;

 private:
  hy_wristlog::engineering::SavedRecording saved_;
  RecordingWorld world_;
  DecodedRecording decoded_;
};

}  // namespace wristlog
