#pragma once

#include <string>
#include <vector>

#include "picture/days.h"
#include "picture/recording.h"

namespace wristlog::picture {

/// Sentences that a user of the recording should read: the logger's warnings, and what the series show.
std::vector<std::string> findingsOf(const PlottedRecording& recording, const RecordedDays& days);

/// "12.5 %"
std::string shareText(std::int64_t part, std::int64_t whole);

}  // namespace wristlog::picture
