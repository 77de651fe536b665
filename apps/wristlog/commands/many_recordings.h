#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "recording/decoded_recording.h"
#include "recording/json.h"
#include "session/options.h"

namespace wristlog {

/// The recordings of a command: folders, or the two files of one.
struct RecordingPlaces {
  std::vector<std::string> Folders;
  RecordingPlace Files;  ///< its `Unchecked` counts for the folders too

  std::vector<RecordingPlace> all() const;
};

/// Where each of them has its output: in `out` itself when there is one, else in a folder there of its own
/// name. Raises InvalidCall when two of them have one name.
std::vector<std::string> outputFolders(const std::vector<RecordingPlace>& places, const std::string& out);

/// The work of a command for one recording. It returns that one's document; without --json it says its words.
using RecordingWork = std::function<Json(const RecordingPlace& place, std::size_t index)>;
/// Whether the words of each of several recordings begin with the folder's name.
enum class Heading : std::uint8_t { Said, None };

/// Does the work for each recording. Of one the document is the command's, and a failure goes on. Of several
/// the document has a member "recordings", and one that fails is told and does not stop the others. Returns
/// the exit status.
int forEachRecording(const CommonOptions& common, const std::vector<RecordingPlace>& places,
                     const RecordingWork& work, Heading heading = Heading::Said);

}  // namespace wristlog
