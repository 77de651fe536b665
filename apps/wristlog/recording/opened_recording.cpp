#include "recording/opened_recording.h"

#include <nlohmann/json.hpp>

#include "engineering/dates.h"
#include "engineering/files.h"
#include "engineering/saved_pendrel.h"

namespace wristlog {

namespace engineering = hy_wristlog::engineering;

namespace {

engineering::SavedRecording readOfFamily(const RecordingPlace& place, Family family) {
  auto recording = readRecording(place, Parts::Accepted);
  if (recording.isPendrel() && family != Family::Every)
    engineering::naming(place.config(), [] { engineering::refusePendrel("wristlog"); });
  return recording;
}

}  // namespace

OpenedRecording::OpenedRecording(const RecordingPlace& place, bool diagnostic, const std::string& now,
                                 Family family)
    : saved_(readOfFamily(place, family)),
      world_(now.empty() ? momentOf(saved_) : engineering::dateFromText(now)),
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
