#pragma once

#include "picture/days.h"
#include "picture/scales.h"
#include "picture/sheet.h"

namespace wristlog::picture {

/// Explains the strokes and signs that the recording has.
void drawLegend(Sheet& sheet, const PlottedRecording& recording, const RecordedDays& days,
                const Scales& scales);

/// "0.1", "10 000".
std::string powerOfTen(int power);

}  // namespace wristlog::picture
