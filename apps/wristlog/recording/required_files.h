#pragma once

#include "recording/decoded_recording.h"

namespace wristlog {

/// Raises FileNotFound when a recording's folder is none, or holds no recording. Says nothing of the two
/// files of a recording without a folder.
void requireFiles(const RecordingPlace& place);

}  // namespace wristlog
