#include "recording/opened_recording.h"

#include <nlohmann/json.hpp>

#include "engineering/dates.h"

namespace wristlog {

OpenedRecording::OpenedRecording(const RecordingPlace& place, bool diagnostic, const std::string& now)
    : saved_(readRecording(place, Parts::Accepted)),
      world_(now.empty() ? momentOf(saved_) : hy_wristlog::engineering::dateFromText(now)),
      decoded_(wristlog::decoded(saved_, place, diagnostic)) {}

Json OpenedRecording::write(const RecordingFiles& files) const {
  files.requireEpochs(decoded_);
  if (decoded_.Part) files.requireNoWhole();
  Json summary = summaryJson(decoded_);
  files.writeRaw(saved_);
  files.writeDecoded(decoded_, summary);
  files.writePictures(decoded_);
  return summary;
}

}  // namespace wristlog
