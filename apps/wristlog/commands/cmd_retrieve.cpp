#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>

#include "commands/commands.h"
#include "commands/docked_retrieval.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

constexpr double MillisecondsPerSecond = 1000;

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

/// By how many seconds at most the network made the retrieval longer, about: the commands' characters wait
/// for their echoes, and the packets for their acknowledgements.
std::int64_t lostToNetwork(const Retrieval& retrieval, const RetrievedRecording& recording) {
  constexpr double CommandCharacters = 180, PacketLength = 1024;
  return std::llround(retrieval.NetworkDelay *
                      (CommandCharacters + static_cast<double>(recording.bytes()) / PacketLength));
}

void tell(const Retrieval& retrieval, const RetrievedRecording& recording, const std::string& meaning,
          const std::string& asked, const std::optional<RecordingFiles>& place) {
  const bool good = retrieval.isGood();
  const Speech out = good ? say() : complain();
  if (!good) out << "Code " << retrieval.Code << ": " << meaning << '\n';
  for (const std::string& warning : ignoredWarnings(retrieval))
    out << "Warning, ignored: " << warning << '\n';
  if (retrieval.Verdict) out << verdictWords(retrieval) << '\n';
  // A server on this machine may take half as long.
  constexpr double NotableDelay = 0.08;
  if (retrieval.NetworkDelay >= NotableDelay)
    out << "The network made the retrieval up to " << lostToNetwork(retrieval, recording)
        << " s longer: an answer takes up to " << std::llround(retrieval.NetworkDelay * MillisecondsPerSecond)
        << " ms.\n";
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
  const DockedRetrieval retrieved(session, modelFromName(options.Model), options, files);
  const auto& [retrieval, recording, meaning, written] = retrieved;
  if (session.asJson()) {
    Json document = documentOf(retrieval, recording, meaning);
    if (retrieval.NetworkDelay > 0) document["network_delay"] = retrieval.NetworkDelay;
    if (written.Place && written.Place->folder() != options.Folder)
      document["written_to"] = written.Place->folder();
    print(document);
  } else {
    tell(retrieval, recording, meaning, options.Folder, written.Place);
  }
  return retrieved.isGood() ? Good : Unsuccessful;
}

}  // namespace wristlog
