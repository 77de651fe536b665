#include "commands/docked_retrieval.h"

#include "commands/held_recording.h"
#include "session/process.h"

namespace wristlog {
namespace {

Retrieval retrieveFrom(Session& session, hy_wristlog::enmLoggerPointer model,
                       const RetrieveOptions& options) {
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  Retrieval retrieval = retrieve(session.main(), model, options.IgnoreWarnings);
  retrieval.NetworkDelay = session.networkDelay();
  session.endProgress();
  return retrieval;
}

}  // namespace

DockedRetrieval::DockedRetrieval(Session& session, hy_wristlog::enmLoggerPointer model,
                                 const RetrieveOptions& options, const RecordingFiles& files)
    : Result(retrieveFrom(session, model, options)),
      Recording(*Result.Logger, Result.Verdict, Result.LowBattery),
      Meaning(judge(Result, Recording, model, interruptRequested())) {
  const HeldRecording held = heldBy(*Result.Logger);
  Written = writeRecording(Recording, files);
  if (Recording.isSound()) {
    // Files and words agree: it is decoded from what was kept of it.
    Result.Verdict = Recording.decode().Result;
    Result.Logger = Recording.decode().Logger;
    // Without a place its folder holds all of it already.
    noteRetrieval(held, Written.Place.value_or(files).folder(), WholeRaw);
  }
  if (!Result.isGood()) session.writeRecord(Written.Place.value_or(files), Result.Code, Meaning);
}

}  // namespace wristlog
