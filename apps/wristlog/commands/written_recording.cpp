#include "commands/written_recording.h"

#include <nlohmann/json.hpp>

#include "hy_wristlog/failure.h"
#include "words/meanings.h"

namespace wristlog {

WrittenRecording writeRecording(RetrievedRecording& recording, const RecordingFiles& files) {
  WrittenRecording written{recording.placeFor(files)};
  if (!written.Place) return written;
  recording.write(*written.Place);
  if (!recording.isSound()) return written;
  try {
    written.Place->writePictures(recording.decode());
  } catch (const hy_wristlog::Failure& failure) {
    written.Drawn = false;
    complain() << wordsFor(failure) << '\n';
  }
  return written;
}

void tellWritten(const Speech& out, const RetrievedRecording& recording, const std::string& asked,
                 const std::optional<RecordingFiles>& place) {
  if (recording.part())
    out << "The beginning of the recording came: " << wordsFor(*recording.part()) << ".\n";
  if (!place) {
    if (recording.isThere())
      out << asked << " was left as it is: it holds as much of the recording already.\n";
    return;
  }
  const std::string& folder = place->folder();
  if (folder != asked) out << asked << " holds another recording, and was left as it is.\n";
  out << "Written to " << folder << ".\n";
  if (recording.part())
    out << "'wristlog decode " << folder << "' and 'wristlog plot " << folder
        << "' show it. A whole retrieval into " << folder << " replaces it.\n";
}

}  // namespace wristlog
