#include "recording/retrieved_recording.h"

#include <nlohmann/json.hpp>

#include "hy_wristlog/failure.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

RetrievedRecording::RetrievedRecording(const hw::Class_VardenLogger& logger,
                                       std::optional<hw::enmDecodeResult> verdict, bool lowBattery)
    : saved_(engineering::savedRecording(logger, lowBattery)), decodes_(verdict.has_value()) {
  if (isThere()) inLogger_ = saved_.bytesInLogger();
}

std::string RetrievedRecording::trouble() const {
  const auto came = static_cast<std::int64_t>(bytes());
  if (!isThere() || came == inLogger_) return {};
  const std::string count = std::to_string(came), held = std::to_string(inLogger_);
  const std::string words = came < inLogger_ ? "Only " + count + " of the recording's " + held +
                                                   " bytes came: the transfer ended early."
                                             : count + " bytes came, though the logger holds " + held + ".";
  return words + " The logger still holds the whole recording: retrieve it again, into another folder.";
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
    files.writeDecoded(*decode().Logger, summary);
    return summary;
  } catch (const hw::Failure& failure) {
    throw hw::Failure(failure.Number, failure.Source,
                      failure.Description +
                          ". The logger still holds the recording: retrieve it again, into another folder");
  }
}

}  // namespace wristlog
