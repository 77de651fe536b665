#include "commands/commands.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "engineering/dates.h"
#include "engineering/recording.h"
#include "recording/json_output.h"
#include "recording/opened_recording.h"
#include "recording/series_csv.h"
#include "words/counted.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

void tell(const DecodedRecording& recording) {
  say() << verdictOf(recording) << ' ' << counted(recording.samples(), "epoch") << " of "
        << counted(recording.epochLength(), "second") << ", from "
        << engineering::isoDate(recording.startUtc(), "Z") << ".\n";
  if (recording.Pendrel) return;
  const hw::EventLog& events = engineering::events(*recording.Logger);
  for (std::size_t i = 0; i < events.size(); ++i) say() << events.text(i) << '\n';
}

Json documentOf(const DecodedRecording& recording) {
  Json document = recording.Pendrel
                      ? recordingJson(*recording.Pendrel)
                      : recordingJson(*recording.Logger, recording.Result, recording.LowBattery);
  if (recording.Part) document.update(partJson(*recording.Part));
  return document;
}

/// Writes the series of all recordings to standard output as one table. What else there is to say of one goes
/// to standard error.
int printSeries(const CommonOptions& common, const DecodeOptions& options) {
  auto part = SeriesPart::Everything;
  const auto work = [&](const RecordingPlace& place, std::size_t) {
    // Whoever closes the pipe wants no more.
    if (!flushStandardOutput()) return Json::object();
    const OpenedRecording opened(place, options.Diagnostic, options.Now, Family::Every);
    const DecodedRecording& recording = opened.decoded();
    if (recording.Result != hw::Decode_OK || recording.Part || recording.Unchecked)
      complain() << place.raw() << ": " << verdictOf(recording) << '\n';
    addSeriesCsv(printText, recording, std::exchange(part, SeriesPart::Rows));
    return Json::object();
  };
  return forEachRecording(common, options.Places.all(), work, Heading::None);
}

}  // namespace

int runDecode(const CommonOptions& common, const DecodeOptions& options) {
  if (options.Folder == StandardOutput) return printSeries(common, options);
  const auto places = options.Places.all();
  const bool writes = !options.Folder.empty();
  std::vector<RecordingFiles> outputs;
  if (writes)
    for (const std::string& folder : outputFolders(places, options.Folder))
      outputs.emplace_back(folder, options.Force).prepare();
  return forEachRecording(common, places, [&](const RecordingPlace& place, std::size_t index) {
    const OpenedRecording opened(place, options.Diagnostic, options.Now, Family::Every);
    if (writes) opened.write(outputs[index]);
    if (common.AsJson) return documentOf(opened.decoded());
    tell(opened.decoded());
    if (writes) say() << "Written to " << outputs[index].folder() << ".\n";
    return Json::object();
  });
}

}  // namespace wristlog
