#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "study/study_manifest.h"

namespace wristlog {

/// One of several recordings that are of the same logger and start.
struct SharingRecording {
  std::string Path;
  const StudiedRecording* Studied;
};

struct SharedPlace {
  std::size_t Chosen = 0;  ///< the recording whose series counts; the others are copies or beginnings of it
  std::string Conflict;    ///< why none counts; empty when one does
};

/// What counts of them: the longest, and of equal ones the first. They are in conflict when another one has
/// other bytes than its beginning, or the same bytes with a configuration that gives something else.
SharedPlace sharedPlace(const std::vector<SharingRecording>& recordings);

}  // namespace wristlog
