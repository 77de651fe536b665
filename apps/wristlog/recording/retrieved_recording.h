#pragma once

#include <optional>
#include <string>

#include "hy_wristlog/failure_numbers.h"
#include "recording/decoded_recording.h"
#include "recording/recording_files.h"
#include "recording/recording_world.h"

namespace wristlog {

/// The code of a retrieval whose bytes are fewer, or more, than the logger holds.
inline constexpr std::int32_t NotWhole = hy_wristlog::FailureNumber::Subscript;

/// What a retrieval has brought. It is decoded from the same data as the saved files will be, so that both
/// give the same.
class RetrievedRecording {
 public:
  /// `verdict` is the retrieval's decode result; none when nothing was decoded. What came in part is decoded
  /// here, to tell how far it reaches.
  RetrievedRecording(const hy_wristlog::Class_VardenLogger& logger,
                     std::optional<hy_wristlog::enmDecodeResult> verdict, bool lowBattery);

  /// The same of a Pendrel. `saved` is empty when nothing came; `decodes` tells whether it was decoded.
  RetrievedRecording(hy_wristlog::engineering::SavedRecording saved, bool decodes);

  bool isThere() const { return !saved_.Ini.empty(); }
  std::size_t bytes() const { return saved_.Raw.size(); }
  std::int64_t bytesInLogger() const { return inLogger_; }
  /// True when all bytes that the logger holds came and were decoded.
  bool isSound() const { return decodes_ && hasOnlyTheLoggersBytes(); }
  /// False when fewer or more bytes came than the logger holds.
  bool hasOnlyTheLoggersBytes() const { return !isThere() || std::ssize(saved_.Raw) == inLogger_; }
  /// How much came; none when all did, or nothing.
  const std::optional<RecordingPart>& part() const { return part_; }

  /// Where it is to be written: there or, where it would replace another recording that it may not replace,
  /// in a new folder beside it. None when nothing came, and when that folder holds as much of it already.
  std::optional<RecordingFiles> placeFor(const RecordingFiles& files) const;

  /// Decodes the recording in its RecordingWorld, which lasts as long as this object.
  const DecodedRecording& decode();
  /// Writes raw data and configuration and then, of a sound recording, all but the pictures. Returns its
  /// facts, with `madeBy` in them when given. Failures say that the logger still holds the recording.
  Json write(const RecordingFiles& files, const char* madeBy = nullptr);

 private:
  hy_wristlog::engineering::SavedRecording saved_;
  std::int64_t inLogger_ = 0;
  bool decodes_;
  std::optional<RecordingWorld> world_;
  std::optional<DecodedRecording> decoded_;
  std::optional<RecordingPart> part_;
};

}  // namespace wristlog
