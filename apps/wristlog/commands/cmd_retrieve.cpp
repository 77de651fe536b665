#include <nlohmann/json.hpp>
#include <optional>

#include "commands/commands.h"
#include "commands/held_recording.h"
#include "commands/retrieval.h"
#include "commands/written_recording.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

Json documentOf(const Retrieval& retrieval, const RetrievedRecording& recording, const std::string& meaning) {
  Json document = recordingJson(*retrieval.Logger, retrieval.Verdict, retrieval.LowBattery);
  document["bytes_received"] = recording.bytes();
  document["bytes_in_logger"] = recording.bytesInLogger();
  document["part"] = false;
  if (recording.part()) document.update(partJson(*recording.part()));
  document["return_code"] = retrieval.Code;
  document["return_code_meaning"] = meaning;
  document["ignored_warnings"] = ignoredWarnings(retrieval);
  document["low_battery_detected"] = retrieval.LowBattery;
  document["logger"] = loggerJson(*retrieval.Logger);
  document["subject"] = subjectJson(*retrieval.Subject);
  return document;
}

void tell(const Retrieval& retrieval, const RetrievedRecording& recording, const std::string& meaning,
          const std::string& asked, const std::optional<RecordingFiles>& place) {
  const bool good = retrieval.isGood();
  const Speech out = good ? say() : complain();
  if (!good) out << "Code " << retrieval.Code << ": " << meaning << '\n';
  for (const std::string& warning : ignoredWarnings(retrieval))
    out << "Warning, ignored: " << warning << '\n';
  if (retrieval.Verdict) out << verdictWords(retrieval) << '\n';
  if (retrieval.LowBattery) out << "The logger's battery is low.\n";
  tellWritten(out, recording, asked, place);
  if (good) out << "The logger has stopped recording. Configure it to record again.\n";
}

}  // namespace

int runRetrieve(const CommonOptions& common, const RetrieveOptions& options) {
  RecordingFiles files(options.Folder, options.Force);
  files.replacePart();
  files.prepare();
  constexpr bool KeepRecord = true;
  Session session(common, KeepRecord);
  const hw::enmLoggerPointer model = modelFromName(options.Model);
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  Retrieval retrieval = retrieve(session.main(), model, options.IgnoreWarnings);
  session.endProgress();

  RetrievedRecording recording(*retrieval.Logger, retrieval.Verdict, retrieval.LowBattery);
  const std::string meaning = judge(retrieval, recording, model, interruptRequested());
  const HeldRecording held = heldBy(*retrieval.Logger);
  const WrittenRecording written = writeRecording(recording, files);
  if (recording.isSound()) {
    // Files and words agree: it is decoded from what was kept of it.
    retrieval.Verdict = recording.decode().Result;
    retrieval.Logger = recording.decode().Logger;
  }
  // Without a place its folder holds all of it already.
  if (recording.isSound()) noteRetrieval(held, written.Place.value_or(files).folder(), WholeRaw);
  if (!retrieval.isGood()) session.writeRecord(written.Place.value_or(files), retrieval.Code, meaning);
  if (session.asJson()) {
    Json document = documentOf(retrieval, recording, meaning);
    if (written.Place && written.Place->folder() != options.Folder)
      document["written_to"] = written.Place->folder();
    print(document);
  } else {
    tell(retrieval, recording, meaning, options.Folder, written.Place);
  }
  return retrieval.isGood() && written.Drawn ? Good : Unsuccessful;
}

}  // namespace wristlog
