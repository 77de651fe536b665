#pragma once

#include <optional>
#include <string>

#include "recording/retrieved_recording.h"
#include "words/say.h"

namespace wristlog {

/// What a retrieval has left of its recording.
struct WrittenRecording {
  std::optional<RecordingFiles> Place;  ///< none when it was not written
  bool Drawn = true;  ///< false only when the pictures of a sound recording could not be written
};

/// Writes what came to where it is to be; of a sound recording the pictures too, whose failure is told on
/// standard error. Raises what `RetrievedRecording::write` raises.
WrittenRecording writeRecording(RetrievedRecording& recording, const RecordingFiles& files);

/// Tells how much came when it was not all, and where it was written instead of, or in, the folder `asked`.
void tellWritten(const Speech& out, const RetrievedRecording& recording, const std::string& asked,
                 const std::optional<RecordingFiles>& place);

}  // namespace wristlog
