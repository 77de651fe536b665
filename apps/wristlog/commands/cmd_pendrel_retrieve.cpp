

#include <nlohmann/json.hpp>
#include "commands/held_recording.h"
#include "commands/pendrel_commands.h"
#include "commands/pendrel_retrieval.h"
#include "engineering/files.h"
#include "recording/json_output.h"
#include "session/pendrel_session.h"
#include "words/counted.h"
#include "words/pendrel_words.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

constexpr const char* StillThere =
    " The recording is still in the logger, which was not stopped: if it was recording, it still is.";
constexpr const char* StillThereAfterAbort =
    " The recording is still in the logger, which was not stopped: if it was recording, it still is. "
    "Retrieve "
    "it again.";

/// What a retrieval that failed has left. Reading changes nothing in a logger.
const char* stateAfter(std::int32_t code, const hw::PendrelDetails& details) {
  if (details.SetupText.empty()) return Unchanged;
  return code == hw::ReturnCode::Aborted ? StillThereAfterAbort : StillThere;
}

Json documentOf(RetrievedRecording& recording, const PendrelRetrieval& result, bool good) {
  Json document = good ? recordingJson(*recording.decode().Pendrel) : Json::object();
  const auto logger = good ? recording.decode().Pendrel : nullptr;
  document["bytes_received"] = recording.bytes();
  document["bytes_in_logger"] = recording.bytesInLogger();
  document["part"] = false;
  if (recording.part()) document.update(partJson(*recording.part()));
  document["battery_life_remaining"] =
      good && hasBatteryDate(*logger) ? Json(roundedDays(result.BatteryLife)) : Json();
  document["logger"] = good ? loggerJson(*logger) : Json();
  document["subject"] = good ? subjectJson(result.Subject) : Json();
  return document;
}

void tellRetrieved(const Speech& out, const hw::Class_Pendrel& logger) {
  if (logger.Get_BytesUsed() < 1)
    out << "The logger has recorded nothing yet; its one value is none.\n";
  else
    out << counted(logger.Get_Samples(), "epoch") << " of " << counted(logger.Get_EpochLength(), "second")
        << ", " << counted(logger.Get_MarkerCount(), "marker") << ", from logger "
        << logger.Get_SerialNumber() << ".\n";
}

constexpr const char* NotStopped = "The logger was not stopped: if it was recording, it still is.";

}  // namespace

int runPendrelRetrieve(const CommonOptions& common, const ReaderOptions& reader,
                       const PendrelRetrieveOptions& options) {
  RecordingFiles files(options.Folder, options.Force);
  files.replacePart();
  files.prepare();
  constexpr bool KeepRecord = true;
  PendrelSession session(common, reader, KeepRecord);
  DockedPendrelRetrieval retrieved(session, reader.Search, options.Repair, files);
  auto& [result, details, recording, written] = retrieved;
  const bool good = result.Code == 0;
  Json document = documentOf(recording, result, good);
  if (written.Place && written.Place->folder() != options.Folder)
    document["written_to"] = written.Place->folder();
  const auto tell = [&](const Speech& out) {
    tellRetrieved(out, *retrieved.Recording.decode().Pendrel);
    tellWritten(out, retrieved.Recording, options.Folder, retrieved.Written.Place);
    out << NotStopped << '\n';
  };
  const int status = session.end(result.Code, document, tell, stateAfter(result.Code, details));
  if (good) return written.Drawn ? status : Unsuccessful;
  if (!session.asJson()) tellWritten(complain(), recording, options.Folder, written.Place);
  session.writeRecord(written.Place.value_or(files), result.Code);
  return status;
}

int runPendrelExport(const CommonOptions& common, const ReaderOptions& reader,
                     const PendrelExportOptions& options) {
  engineering::checkOutput(options.File, options.Force);
  PendrelSession session(common, reader);
  std::int32_t code = retrieve(session, reader.Search, options.Repair).Code;
  if (code == 0) code = session.workflows().fncWriteKRCfile(options.File);
  if (code == 0) noteRetrieval(heldBy(session.logger()), options.File);
  return session.end(
      code, {{"file", code == 0 ? Json(options.File) : Json()}},
      [&](const Speech& out) {
        tellRetrieved(out, session.logger());
        out << "Written to " << options.File << ".\n" << NotStopped << '\n';
      },
      stateAfter(code, session.workflows().Details()));
}

}  // namespace wristlog
