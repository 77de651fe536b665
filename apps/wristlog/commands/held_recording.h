#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "recording/json.h"

namespace wristlog {

/// The recording that a logger holds, as the logger tells.
struct HeldRecording {
  std::string SerialNumber, Identity;
  std::string Start;          ///< UTC, or the text of an unknown one
  std::string StartLocal;     ///< with its offset; empty when unknown
  std::int64_t Bytes = 0;     ///< 0 for none, below 0 when the logger does not tell
  std::string Read, ReadUtc;  ///< when the logger told: local time with its offset, and UTC
  /// The logger goes on recording while it is retrieved, so that it soon holds more.
  bool GoesOn = false;

  bool isThere() const { return Bytes != 0; }
};

HeldRecording heldBy(const hy_wristlog::Class_VardenLogger& logger);
HeldRecording heldBy(const hy_wristlog::Class_Pendrel& logger);

/// What is noted of a recording that was retrieved whole and written. No logger tells this: a Varden logger
/// clears its data flag before the files are written, a Pendrel logger keeps none.
struct RetrievalNote {
  std::string When;     ///< local time with its offset
  std::string Place;    ///< the folder or file, from the root
  bool IsThere = true;  ///< what was written is still in its place
};

/// The note of this recording in the user's data folder; none when there is none, when it cannot be read, and
/// when another recording has been written to the same place since.
std::optional<RetrievalNote> noteOf(const HeldRecording& held);
/// Notes that a recording was written to `place`, all of it to its file `bytes`; empty where `place` is that
/// file. Says so when it cannot.
void noteRetrieval(const HeldRecording& held, const std::string& place, const std::string& bytes = {});
/// To be called when the logger has a new configuration.
void forgetRetrieval(const std::string& serialNumber);

/// Whether and when it was retrieved, in a sentence.
std::string retrievalWords(const HeldRecording& held);
/// The same as {"retrieved", "place"}, both null when it was not retrieved; null without a recording.
Json retrievalJson(const HeldRecording& held);

/// Raises FileExists for a recording without a note, and tells what would be lost and what `retrieve` command
/// saves it.
void requireRetrieved(const HeldRecording& held, const std::string& retrieve);
/// Raises FileExists: it cannot be told what the logger holds, for this reason.
[[noreturn]] void refuseUnknown(const std::string& reason);

/// "2026-03-02 09:01 -05:00" of "2026-03-02T09:01:00-05:00".
std::string minuteWords(const std::string& isoLocal);

}  // namespace wristlog
