#include "commands/pendrel_retrieval.h"

#include "commands/held_recording.h"
#include "engineering/saved_pendrel.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// What came; nothing when the retrieval ended before the memory was read.
engineering::SavedRecording savedOf(const hw::Class_Pendrel& logger, const hw::PendrelDetails& details,
                                    bool good) {
  if (!good && details.Memory.empty()) return {};
  return engineering::savedRecording(logger, details.Memory);
}

}  // namespace

PendrelRetrieval retrieve(PendrelSession& session, bool search, bool repair) {
  PendrelRetrieval result;
  result.Code = session.workflows().RetrieveLegacy(result.Subject, false, result.BatteryLife, search, repair);
  return result;
}

DockedPendrelRetrieval::DockedPendrelRetrieval(PendrelSession& session, bool search, bool repair,
                                               const RecordingFiles& files)
    : Result(retrieve(session, search, repair)),
      Details(session.workflows().Details()),
      Recording(savedOf(session.logger(), Details, Result.Code == 0), Result.Code == 0) {
  const bool good = Result.Code == 0;
  const HeldRecording held = good ? heldBy(session.logger()) : HeldRecording{};
  Written = writeRecording(Recording, files);
  if (good) noteRetrieval(held, Written.Place.value_or(files).folder(), WholeRaw);
}

}  // namespace wristlog
