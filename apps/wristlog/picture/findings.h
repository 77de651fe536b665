#pragma once

#include <string>
#include <vector>

#include "picture/days.h"
#include "picture/recording.h"

namespace wristlog::picture {

/// What somebody who works with the recording should know, in sentences: what the logger warned of, and what
/// the series tell.
std::vector<std::string> findingsOf(const PlottedRecording& recording, const RecordedDays& days);

/// "12.5 %"
std::string shareText(std::int64_t part, std::int64_t whole);

}  // namespace wristlog::picture
