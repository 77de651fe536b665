#pragma once

#include <optional>
#include <string>

#include "recording/recording_files.h"
#include "recording/recording_world.h"
#include "recording/saved_recording.h"

namespace wristlog {

/// The code of a retrieval whose bytes are fewer, or more, than the logger holds.
inline constexpr std::int32_t NotWhole = 9;

/// What a retrieval has brought: kept in files by the same road by which they are decoded again.
class RetrievedRecording {
 public:
  /// `verdict` is the retrieval's, none when nothing was decoded.
  RetrievedRecording(const hy_wristlog::Class_VardenLogger& logger,
                     std::optional<hy_wristlog::enmDecodeResult> verdict, bool lowBattery);

  bool isThere() const { return !saved_.Raw.empty(); }
  std::size_t bytes() const { return saved_.Raw.size(); }
  std::int64_t bytesInLogger() const { return inLogger_; }
  /// All bytes that the logger holds came, and were decoded.
  bool isSound() const { return decodes_ && trouble().empty(); }
  /// In words why these are not the bytes that the logger holds; empty when they are, or nothing came.
  std::string trouble() const;

  /// A part of a recording is kept only where it takes no other recording's place.
  bool mayBeWritten(const RecordingFiles& files) const {
    return isThere() && (isSound() || !files.holdAny());
  }

  /// Enters the recording's world, which stays until this goes, and decodes it there. Only for a sound one.
  const DecodedRecording& decode();
  /// Raw data and configuration first, and of a sound recording all but the pictures, `made_by` in its facts
  /// when it is given. Returns these facts. Failures say that the logger still holds the recording.
  Json write(const RecordingFiles& files, const char* madeBy = nullptr);

 private:
  hy_wristlog::engineering::SavedRecording saved_;
  std::int64_t inLogger_ = 0;
  bool decodes_;
  std::optional<RecordingWorld> world_;
  std::optional<DecodedRecording> decoded_;
};

}  // namespace wristlog
