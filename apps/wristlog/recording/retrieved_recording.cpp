#include "recording/retrieved_recording.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "hy_wristlog/failure.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

RetrievedRecording::RetrievedRecording(const hw::Class_VardenLogger& logger,
                                       std::optional<hw::enmDecodeResult> verdict, bool lowBattery)
    : RetrievedRecording(engineering::savedRecording(logger, lowBattery), verdict.has_value()) {}

RetrievedRecording::RetrievedRecording(engineering::SavedRecording saved, bool decodes)
    : saved_(std::move(saved)), decodes_(decodes) {
  if (!isThere()) return;
  inLogger_ = saved_.bytesInLogger();
  if (!saved_.isPart()) return;
  part_ = {std::ssize(saved_.Raw), inLogger_, {}};
  try {
    const RecordingWorld world(momentOf(saved_));
    part_ = decoded(saved_, false).Part;
  } catch (const hw::Failure&) {
    // How far it reaches is not known then.
  }
}

std::optional<RecordingFiles> RetrievedRecording::placeFor(const RecordingFiles& files) const {
  if (!isThere()) return std::nullopt;
  const bool replaces = isSound() && files.mayOverwrite();
  if (replaces || !files.holdAny() || files.holdPartOf(saved_)) return files;
  if (files.holdAsMuchOf(saved_)) return std::nullopt;
  return files.beside();
}

const DecodedRecording& RetrievedRecording::decode() {
  if (!decoded_) {
    world_.emplace(momentOf(saved_));
    decoded_ = decoded(saved_, false);
  }
  return *decoded_;
}

Json RetrievedRecording::write(const RecordingFiles& files, const char* madeBy) {
  try {
    files.writeRaw(saved_);
    if (!isSound()) return Json();
    Json summary = summaryJson(decode());
    if (madeBy != nullptr) summary["made_by"] = madeBy;
    files.writeDecoded(decode(), summary);
    return summary;
  } catch (const hw::Failure& failure) {
    throw hw::Failure(failure.Number, failure.Source,
                      failure.Description +
                          ". The logger still holds the recording: retrieve it again, into another folder");
  }
}

}  // namespace wristlog
