#pragma once

#include <string>

#include "picture/days.h"
#include "picture/recording.h"

namespace wristlog::picture {

/// The recording as one HTML file that needs nothing else: warnings and facts in words, the actogram, a
/// summary of each local day, the events, and how to read the picture. It holds no script.
std::string reportHtml(const PlottedRecording& recording, const RecordedDays& days);

}  // namespace wristlog::picture
