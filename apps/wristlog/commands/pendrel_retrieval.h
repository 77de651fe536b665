#pragma once

#include <cstdint>

#include "commands/written_recording.h"
#include "hy_wristlog/Class_Subject.h"
#include "recording/retrieved_recording.h"
#include "session/pendrel_session.h"

namespace wristlog {

/// What RetrieveLegacy has handed out.
struct PendrelRetrieval {
  std::int32_t Code = 0;
  hy_wristlog::Class_Subject Subject;
  float BatteryLife = 0;
};

PendrelRetrieval retrieve(PendrelSession& session, bool search, bool repair);

/// Retrieves from the session's Pendreader, writes what came to `files` or beside them, and notes what came
/// whole. As long as it lives the thread is in the recording's own world.
struct DockedPendrelRetrieval {
  DockedPendrelRetrieval(PendrelSession& session, bool search, bool repair, const RecordingFiles& files);

  PendrelRetrieval Result;
  hy_wristlog::PendrelDetails Details;
  RetrievedRecording Recording;
  WrittenRecording Written;
};

}  // namespace wristlog
