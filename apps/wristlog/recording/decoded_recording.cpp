#include "recording/decoded_recording.h"

#include "base/dates.h"
#include "engineering/files.h"
#include "hy_wristlog/failure.h"
#include "recording/recording_world.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

std::vector<std::string> RecordingPlace::files() const {
  std::vector<std::string> names{config(), raw()};
  std::erase(names, "");
  return names;
}

engineering::SavedRecording readRecording(const RecordingPlace& place) {
  auto recording = engineering::savedRecording(place.config(), place.raw());
  const std::string mismatch = recording.mismatch();
  if (mismatch.empty()) return recording;
  const std::string words = place.raw() + " is not the recording that " + place.config() +
                            " belongs to, or not all of it: " + mismatch;
  if (!place.Unchecked)
    throw hw::Failure(hw::FailureNumber::OutOfRange, "wristlog",
                      words +
                          ". A transfer that ended early is retrieved again; --unchecked takes the bytes as "
                          "they are");
  complain() << "Warning: " << words << ". The bytes are taken as they are.\n";
  return recording;
}

double momentOf(const engineering::SavedRecording& recording) {
  if (const auto retrieved = recording.retrievedAt()) return *retrieved;
  const double start = engineering::openRecording(recording)->Get_StartTimeGMT();
  const RecordingWorld world(start);
  try {
    const auto logger = decoded(recording, false).Logger;
    return logger->Get_StartTimeGMT() +
           static_cast<double>(logger->Get_Samples()) * logger->Get_EpochLength() / hw::SecondsPerDay;
  } catch (const hw::Failure&) {
    // The failure is not lost: decoding raises it again.
    return start;
  }
}

std::string verdictOf(const DecodedRecording& recording) {
  if (!recording.Unchecked) return wordsFor(recording.Result);
  const std::string words = "Unchecked: the bytes are not those that the configuration tells of.";
  return recording.Result == hw::Decode_OK ? words : words + " " + wordsFor(recording.Result);
}

DecodedRecording decoded(const engineering::SavedRecording& recording, bool diagnostic) {
  DecodedRecording result;
  result.Unchecked = !recording.mismatch().empty();
  result.Logger = engineering::openRecording(recording);
  result.Result = engineering::decode(*result.Logger, diagnostic, result.LowBattery);
  result.LowBattery = result.LowBattery || recording.lowBattery();
  return result;
}

DecodedRecording decoded(const engineering::SavedRecording& recording, const RecordingPlace& place,
                         bool diagnostic) {
  const std::string files = place.raw() + " does not fit " + place.config();
  auto result = engineering::naming(files, [&] { return decoded(recording, diagnostic); });
  if (result.Result == hw::Decode_InputError)
    throw hw::Failure(hw::FailureNumber::OutOfRange, "wristlog", files + ": nothing of it can be decoded");
  return result;
}

}  // namespace wristlog
