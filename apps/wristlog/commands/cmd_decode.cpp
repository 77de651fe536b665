#include "commands/commands.h"

#include <nlohmann/json.hpp>
#include "engineering/dates.h"
#include "engineering/recording.h"
#include "recording/decoded_recording.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "recording/recording_world.h"
#include "words/counted.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

int runDecode(const CommonOptions& common, const DecodeOptions& options) {
  const RecordingFiles files(options.Folder, options.Force);
  if (!options.Folder.empty()) files.prepare();
  const auto recording = readRecording(options.Place, Parts::Accepted);
  const RecordingWorld world(options.Now.empty() ? momentOf(recording)
                                                 : engineering::dateFromText(options.Now));
  const DecodedRecording result = decoded(recording, options.Place, options.Diagnostic);
  const auto& logger = result.Logger;
  if (!options.Folder.empty()) {
    files.requireEpochs(*logger);
    if (result.Part) files.requireNoWhole();
    const Json summary = summaryJson(result);
    files.writeRaw(recording);
    files.writeDecoded(result, summary);
    files.writePictures(result);
  }

  if (common.AsJson) {
    Json document = recordingJson(*logger, result.Result, result.LowBattery);
    if (result.Part) document.update(partJson(*result.Part));
    print(document);
    return Good;
  }
  say() << verdictOf(result) << ' ' << counted(logger->Get_Samples(), "epoch") << " of "
        << counted(logger->Get_EpochLength(), "second") << ", from "
        << engineering::isoDate(logger->Get_StartTimeGMT(), "Z") << ".\n";
  const hw::EventLog& events = engineering::events(*logger);
  for (std::size_t i = 0; i < events.size(); ++i) say() << events.text(i) << '\n';
  if (!options.Folder.empty()) say() << "Written to " << options.Folder << ".\n";
  return Good;
}

}  // namespace wristlog
