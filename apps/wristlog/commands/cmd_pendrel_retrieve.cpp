

#include <nlohmann/json.hpp>
#include "commands/held_recording.h"
#include "commands/pendrel_commands.h"
#include "engineering/dates.h"
#include "engineering/files.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure.h"
#include "recording/json_output.h"
#include "recording/plotted_pendrel.h"
#include "recording/recording_files.h"
#include "session/pendrel_session.h"
#include "words/counted.h"
#include "words/meanings.h"
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

struct Retrieved {
  std::int32_t Code = 0;
  hw::Class_Subject Subject;
  float BatteryLife = 0;
};

Retrieved retrieve(PendrelSession& session, bool search, bool repair) {
  Retrieved result;
  result.Code = session.workflows().RetrieveLegacy(result.Subject, false, result.BatteryLife, search, repair);
  return result;
}

Json summaryOf(hw::Class_Pendrel& logger, const hw::PendrelDetails& details,
               const hw::Class_Subject& subject) {
  Json summary = Json::object();
  summary["model"] = details.DeviceText;
  summary["subject"] = subjectJson(subject);
  summary["time_zone"] = logger.Get_TimeZoneAbbrev();
  summary["time_zone_iana"] = ianaZoneJson(logger);
  summary["start_local"] = engineering::isoDate(logger.Get_StartDate() + logger.Get_StartTime());
  summary["start_utc"] = engineering::isoDate(engineering::startUtc(logger), "Z");
  summary["epoch_seconds"] = logger.Get_EpochLength();
  summary["samples"] = logger.Get_Samples();
  summary["markers"] = logger.Get_MarkerCount();
  summary["configuration"] = loggerJson(logger);
  return summary;
}

/// What a retrieval that failed has left. Reading changes nothing in a logger.
const char* stateAfter(std::int32_t code, const hw::PendrelDetails& details) {
  if (details.SetupText.empty()) return Unchanged;
  return code == hw::ReturnCode::Aborted ? StillThereAfterAbort : StillThere;
}

std::string bytesAsText(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

void writeFiles(const RecordingFiles& files, PendrelSession& session, const hw::PendrelDetails& details,
                const Retrieved& result) {
  try {
    if (!details.Memory.empty()) files.writeFile("raw.bin", bytesAsText(details.Memory));
    if (!details.SetupText.empty()) files.writeFile("setup.txt", details.SetupText);
    if (result.Code != 0) return;
    files.writeDecoded(session.logger(), summaryOf(session.logger(), details, result.Subject));
  } catch (const hw::Failure& failure) {
    throw hw::Failure(failure.Number, failure.Source,
                      failure.Description +
                          ". The logger still holds the recording: retrieve it again, into another folder");
  }
}

/// False, after telling why, when the pictures could not be made though the other files were written.
bool drawPictures(const RecordingFiles& files, const hw::Class_Pendrel& logger, const std::string& model) {
  try {
    files.writePictures(plottedRecording(logger, model));
    return true;
  } catch (const hw::Failure& failure) {
    complain() << wordsFor({failure.Number, failure.Source,
                            failure.Description +
                                ". Only the pictures are missing: the recording's other files are written"})
               << '\n';
    return false;
  }
}

void tellRetrieved(const Speech& out, const hw::Class_Pendrel& logger, const std::string& place) {
  if (logger.Get_BytesUsed() < 1)
    out << "The logger has recorded nothing yet; its one value is none.\n";
  else
    out << counted(logger.Get_Samples(), "epoch") << " of " << counted(logger.Get_EpochLength(), "second")
        << ", " << counted(logger.Get_MarkerCount(), "marker") << ", from logger "
        << logger.Get_SerialNumber() << ".\n";
  out << "Written to " << place << ".\n"
      << "The logger was not stopped: if it was recording, it still is.\n";
}

}  // namespace

int runPendrelRetrieve(const CommonOptions& common, const ReaderOptions& reader,
                       const PendrelRetrieveOptions& options) {
  const RecordingFiles files(options.Folder, options.Force,
                             {"series.csv", "recording.json", "datapackage.json", "raw.bin", "setup.txt",
                              "actogram.svg", "report.html"});
  files.prepare();
  constexpr bool KeepRecord = true;
  PendrelSession session(common, reader, KeepRecord);
  const Retrieved result = retrieve(session, reader.Search, options.Repair);
  const hw::PendrelDetails details = session.workflows().Details();
  const bool good = result.Code == 0;
  writeFiles(files, session, details, result);
  if (good) noteRetrieval(heldBy(session.logger()), options.Folder, WholeRaw);
  const bool drawn = !good || drawPictures(files, session.logger(), details.DeviceText);
  Json facts = good ? recordingJson(session.logger()) : Json::object();
  facts["battery_life_remaining"] =
      good && hasBatteryDate(session.logger()) ? Json(roundedDays(result.BatteryLife)) : Json();
  facts["logger"] = good ? loggerJson(session.logger()) : Json();
  facts["subject"] = good ? subjectJson(result.Subject) : Json();
  const int status = session.end(
      result.Code, facts, [&](const Speech& out) { tellRetrieved(out, session.logger(), options.Folder); },
      stateAfter(result.Code, details));
  if (good) return drawn ? status : Unsuccessful;
  if (!details.Memory.empty())
    complain() << "What was read of the memory, " << details.Memory.size() << " bytes, is in "
               << options.Folder << "/raw.bin.\n";
  session.writeRecord(files, result.Code);
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
      [&](const Speech& out) { tellRetrieved(out, session.logger(), options.File); },
      stateAfter(code, session.workflows().Details()));
}

}  // namespace wristlog
