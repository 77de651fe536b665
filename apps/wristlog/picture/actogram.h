#pragma once

#include <string>
#include <vector>

#include "picture/days.h"
#include "picture/recording.h"

namespace wristlog::picture {

/// The recording as an actogram, an SVG file that stands alone: a row shows a local day or, double-plotted, a
/// day and the day that follows it. `days` are those from midnight to midnight.
std::string actogramSvg(const PlottedRecording& recording, const RecordedDays& days);

/// The actogram for an HTML page that has the styles of style.h: in pieces of a printed page at most, of
/// whole weeks where they fit. The legend stands above the first, and in print above each.
std::vector<std::string> actogramPieces(const PlottedRecording& recording, const RecordedDays& days);

/// "2026-03-02 09:02 to 2026-03-09 10:00, local time"; "time of Europe/Paris" where that is drawn.
std::string periodText(const PlottedRecording& recording);
/// What the clock of the picture shows: "local time".
std::string timeWords(const PlottedRecording& recording);

}  // namespace wristlog::picture
