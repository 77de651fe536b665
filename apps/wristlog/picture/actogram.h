#pragma once

#include <string>
#include <vector>

#include "picture/days.h"
#include "picture/recording.h"

namespace wristlog::picture {

/// The recording as a double-plotted actogram, an SVG file that stands alone: a row shows a local day and
/// the day that follows it.
std::string actogramSvg(const PlottedRecording& recording, const RecordedDays& days);

/// The actogram for an HTML page that has `pictureStyle`: the legend, then the days in pieces that are not
/// cut in print, of whole weeks where they fit.
std::vector<std::string> actogramPieces(const PlottedRecording& recording, const RecordedDays& days);

/// "2026-03-02 09:02 to 2026-03-09 10:00", local time.
std::string periodText(const PlottedRecording& recording);

}  // namespace wristlog::picture
