#include <nlohmann/json.hpp>
#include <optional>

#include "commands/commands.h"
#include "commands/held_recording.h"
#include "commands/retrieval.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "recording/retrieved_recording.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

/// What was written of the recording.
struct Written {
  std::optional<RecordingFiles> Place;  ///< none when it was not written
  bool Drawn = true;  ///< false only when the pictures of a sound recording could not be written
};

/// A sound recording is decoded from what was kept of it, so that its files and words agree.
Written write(Retrieval& retrieval, RetrievedRecording& recording, const RecordingFiles& files) {
  Written written{recording.placeFor(files)};
  if (written.Place) recording.write(*written.Place);
  if (!recording.isSound()) return written;
  retrieval.Verdict = recording.decode().Result;
  retrieval.Logger = recording.decode().Logger;
  try {
    if (written.Place) written.Place->writePictures(recording.decode());
  } catch (const hw::Failure& failure) {
    written.Drawn = false;
    complain() << wordsFor(failure) << '\n';
  }
  return written;
}

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

void tellPlace(const Speech& out, const RetrievedRecording& recording, const std::string& asked,
               const std::string& folder) {
  if (folder != asked) out << asked << " holds another recording, and was left as it is.\n";
  out << "Written to " << folder << ".\n";
  if (recording.part())
    out << "'wristlog decode " << folder << "' and 'wristlog plot " << folder
        << "' show it. A whole retrieval into " << folder << " replaces it.\n";
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
  if (recording.part())
    out << "The beginning of the recording came: " << wordsFor(*recording.part()) << ".\n";
  if (!place && recording.isThere())
    out << asked << " was left as it is: it holds as much of the recording already.\n";
  if (place) tellPlace(out, recording, asked, place->folder());
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
  const Written written = write(retrieval, recording, files);
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
