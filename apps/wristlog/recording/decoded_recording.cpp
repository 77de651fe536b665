#include "recording/decoded_recording.h"

#include "base/dates.h"
#include "engineering/dates.h"
#include "engineering/files.h"
#include "engineering/saved_pendrel.h"
#include "engineering/zones.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "recording/recording_files.h"
#include "recording/recording_world.h"
#include "recording/required_files.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

bool isFile(const std::string& path) {
  try {
    return platform::current().files().state(path).Kind == platform::FileKind::File;
  } catch (const platform::SystemError&) {
    return false;
  }
}

}  // namespace

std::string RecordingPlace::config() const {
  if (Folder.empty()) return ConfigFile;
  const std::string present = Folder + "/" + ConfigName, older = Folder + "/" + SetupName;
  return !isFile(present) && isFile(older) ? older : present;
}

std::string RecordingPlace::raw() const {
  if (Folder.empty()) return RawFile;
  const std::string whole = Folder + "/" + WholeRaw, part = Folder + "/" + PartRaw;
  return !isFile(whole) && isFile(part) ? part : whole;
}

std::vector<std::string> RecordingPlace::files() const {
  std::vector<std::string> names{config(), raw()};
  std::erase(names, "");
  return names;
}

engineering::SavedRecording readRecording(const RecordingPlace& place, Parts parts) {
  requireFiles(place);
  auto recording = engineering::savedRecording(place.config(), place.raw());
  const std::string mismatch = recording.mismatch();
  const bool refusedPart = recording.isPart() && parts == Parts::Refused;
  if (mismatch.empty() && !refusedPart) return recording;
  const std::string words =
      mismatch.empty() ? place.raw() + " is only the beginning of a recording: " +
                             wordsFor(RecordingPart{std::ssize(recording.Raw), recording.bytesInLogger(), {}})
                       : place.raw() + " is not the recording that " + place.config() +
                             " belongs to, or not all of it: " + mismatch;
  if (!place.Unchecked)
    throw hw::Failure(hw::FailureNumber::OutOfRange, "wristlog",
                      words +
                          ". Retrieve again what broke off or was stopped; decode, plot and report take "
                          "the bytes as they are with --unchecked");
  complain() << "Warning: " << words << ". The bytes are taken as they are.\n";
  return recording;
}

std::int32_t DecodedRecording::samples() const {
  return with([](auto& logger) { return logger.Get_Samples(); });
}
std::int32_t DecodedRecording::epochLength() const {
  return with([](auto& logger) { return logger.Get_EpochLength(); });
}
double DecodedRecording::startUtc() const {
  return Pendrel ? engineering::startUtc(*Pendrel) : Logger->Get_StartTimeGMT();
}
double DecodedRecording::endUtc() const {
  return startUtc() + static_cast<double>(samples()) * epochLength() / hw::SecondsPerDay;
}

double momentOf(const engineering::SavedRecording& recording) {
  const auto pendrel = recording.isPendrel() ? engineering::openPendrel(recording) : nullptr;
  const double ahead = pendrel ? pendrel->Get_GMToffset() / hw::MinutesPerDay : 0;
  if (const auto retrieved = recording.retrievedAt()) return *retrieved + ahead;
  const double start =
      pendrel ? engineering::startUtc(*pendrel) : engineering::openRecording(recording)->Get_StartTimeGMT();
  const RecordingWorld world(start);
  try {
    return decoded(recording, false).endUtc() + ahead;
  } catch (const hw::Failure&) {
    // The failure is not lost: decoding raises it again.
    return start;
  }
}

std::string wordsFor(const RecordingPart& part) {
  return std::to_string(part.Bytes) + " of " + std::to_string(part.InLogger) + " bytes" +
         (part.Until ? ", until " + engineering::isoDate(*part.Until, "Z") : "");
}

std::string verdictOf(const DecodedRecording& recording) {
  if (!recording.Pendrel || recording.Part || recording.Unchecked)
    return verdictOf(recording.Result, recording.Part, recording.Unchecked);
  return recording.Undigested ? "As many bytes are there as the logger held. Nothing tells whether they are "
                                "those that were read."
                              : "The recording is whole.";
}

std::string verdictOf(hw::enmDecodeResult result, const std::optional<RecordingPart>& part,
                      bool isUnchecked) {
  if (!isUnchecked && !part) return hw::Class_Main::ResultMeaning(result);
  const std::string words = part ? "Only the beginning of a recording: " + wordsFor(*part) + "."
                                 : "Unchecked: the bytes are not those that the configuration tells of.";
  return result == hw::Decode_OK ? words : words + " " + hw::Class_Main::ResultMeaning(result);
}

DecodedRecording decoded(const engineering::SavedRecording& recording, bool diagnostic) {
  DecodedRecording result;
  result.Unchecked = !recording.mismatch().empty();
  result.Undigested = !recording.hasDigest();
  if (recording.isPendrel()) {
    result.Pendrel = engineering::openPendrel(recording);
    engineering::decode(*result.Pendrel);
    result.Result = hw::Decode_OK;
  } else {
    result.Logger = engineering::openRecording(recording);
    result.Result = engineering::decode(*result.Logger, diagnostic, result.LowBattery);
    result.LowBattery = result.LowBattery || recording.lowBattery();
  }
  if (recording.isPart()) {
    result.Part = {std::ssize(recording.Raw), recording.bytesInLogger(), {}};
    if (result.samples() > 0) result.Part->Until = result.endUtc();
  }
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
