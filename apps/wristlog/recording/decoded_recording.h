#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engineering/saved_recording.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"

namespace wristlog {

/// The bytes of a whole recording, and of one of which only the beginning came.
inline constexpr const char *WholeRaw = "raw.bin", *PartRaw = "raw.partial.bin";
/// What tells of them, and a Pendrel's set-up answer as text.
inline constexpr const char *ConfigName = "config.ini", *SetupName = "setup.txt";

/// The place of a saved recording: a folder with config.ini and raw.bin, or raw.partial.bin when only a part
/// came, or the two files. A Pendrel's folder of an older version has setup.txt in the place of config.ini.
struct RecordingPlace {
  std::string Folder, ConfigFile, RawFile;
  bool Unchecked = false;  ///< the bytes are taken even when they are not those of the configuration

  std::string config() const;
  std::string raw() const;
  /// The files' paths; none for an empty place.
  std::vector<std::string> files() const;
};

/// Whether a command can say of what it makes that it is only the beginning of a recording.
enum class Parts : std::uint8_t { Refused, Accepted };

/// Raises FileNotFound, PathFileAccess and what damaged files raise; OutOfRange for a recording without
/// bytes, for bytes that are not those of the configuration and, where they are refused, for a part. With
/// `Unchecked` such bytes and parts cause only a warning on standard error.
hy_wristlog::engineering::SavedRecording readRecording(const RecordingPlace& place, Parts parts);

/// The moment that a recording is seen from: when it was retrieved or, where that is not known, when its last
/// epoch ended. In UTC; of a Pendrel, whose dates are local, by its own clock.
double momentOf(const hy_wristlog::engineering::SavedRecording& recording);

/// How much of a recording is there.
struct RecordingPart {
  std::int64_t Bytes = 0, InLogger = 0;
  std::optional<double> Until;  ///< UTC; none when nothing of it can be decoded
};

/// "12288 of 30313 bytes, until 2026-03-04T10:22:00Z"
std::string wordsFor(const RecordingPart& part);

/// A recording of either family: one of the two loggers is there.
struct DecodedRecording {
  std::shared_ptr<hy_wristlog::Class_VardenLogger> Logger;
  std::shared_ptr<hy_wristlog::Class_Pendrel> Pendrel;
  /// Of a Pendrel, whose data tell nothing of their soundness, what stands here says nothing.
  hy_wristlog::enmDecodeResult Result = hy_wristlog::Decode_InputError;
  bool LowBattery = false;
  bool Unchecked = false;             ///< the bytes are not those that the configuration tells of
  bool Undigested = false;            ///< nothing tells the digest of what was retrieved
  std::optional<RecordingPart> Part;  ///< only the beginning of the recording

  /// Calls `use` with the logger that is there.
  template <class Use>
  auto with(const Use& use) const {
    return Pendrel ? use(*Pendrel) : use(*Logger);
  }
  std::int32_t samples() const;
  std::int32_t epochLength() const;
  double startUtc() const;
  /// When the last decoded epoch ends.
  double endUtc() const;
};

/// The decode result in words. For unchecked bytes it says only that nothing vouches for them, of a part how
/// far it reaches.
std::string verdictOf(const DecodedRecording& recording);
/// The same for a decode result; `part` says that only the beginning was decoded.
std::string verdictOf(hy_wristlog::enmDecodeResult result, const std::optional<RecordingPart>& part,
                      bool isUnchecked = false);

/// To be called in a RecordingWorld. Raises what decoding raises.
DecodedRecording decoded(const hy_wristlog::engineering::SavedRecording& recording, bool diagnostic);
/// The same for a recording in files: failures name the files. Raises OutOfRange too when nothing can be
/// decoded.
DecodedRecording decoded(const hy_wristlog::engineering::SavedRecording& recording,
                         const RecordingPlace& place, bool diagnostic);

}  // namespace wristlog
