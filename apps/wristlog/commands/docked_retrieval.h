#pragma once

#include <string>

#include "commands/commands.h"
#include "commands/retrieval.h"
#include "commands/written_recording.h"
#include "recording/retrieved_recording.h"
#include "session/session.h"

namespace wristlog {

/// Retrieves from the session's dock, writes what came to `files` or beside them, and notes what came whole.
/// Where that fails, the session's record is left beside the files. As long as it lives the thread is in the
/// recording's own world.
struct DockedRetrieval {
  DockedRetrieval(Session& session, hy_wristlog::enmLoggerPointer model, const RetrieveOptions& options,
                  const RecordingFiles& files);

  Retrieval Result;
  RetrievedRecording Recording;
  std::string Meaning;  ///< of the retrieval's code
  WrittenRecording Written;

  bool isGood() const { return Result.isGood() && Written.Drawn; }
};

}  // namespace wristlog
