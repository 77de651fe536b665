#include <iostream>
#include <optional>

#include "commands.h"
#include "counted.h"
#include "json_output.h"
#include "meanings.h"
#include "process.h"
#include "recording_files.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

int runRetrieve(const CommonOptions& common, const RetrieveOptions& options) {
  const RecordingFiles files(options.Folder, options.Force);
  files.prepare();
  constexpr bool KeepTraffic = true;
  Session session(common, KeepTraffic);
  const hw::enmLoggerPointer model = modelFromName(options.Model);

  constexpr std::int32_t Aborted = 10013;
  constexpr auto NotDecoded = static_cast<hw::enmDecodeResult>(-1);
  std::shared_ptr<hw::Class_VardenLogger> logger;
  auto subject = std::make_shared<hw::Class_Subject>();
  hw::enmDecodeResult result = NotDecoded;
  bool lowBattery = false;
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  std::int32_t code =
      session.main().Retrieve(model, logger, subject, result, &lowBattery, nullptr, options.IgnoreWarnings);
  session.endProgress();
  std::optional<hw::enmDecodeResult> verdict;
  if (result != NotDecoded) verdict = result;

  const bool hasRecording = !engineering::rawData(*logger).empty();
  // A request that came before there was a logger to abort.
  if (interruptRequested() && code != 0 && !hasRecording) code = Aborted;
  const std::string meaning = explanationOf(code, model);
  try {
    if (hasRecording && verdict)
      files.write(*logger, summaryJson(*logger, *subject, verdict, lowBattery));
    else if (hasRecording)
      files.writeRaw(*logger);
  } catch (const hw::Failure& failure) {
    throw hw::Failure(failure.Number, failure.Source,
                      failure.Description +
                          ". The logger still holds the recording: retrieve it again, into another folder");
  }
  bool drawn = true;
  try {
    if (hasRecording && verdict) files.writePictures(*logger, *verdict, lowBattery);
  } catch (const hw::Failure& failure) {
    drawn = false;
    std::cerr << wordsFor(failure) << '\n';
  }
  const int status = code == 0 && drawn ? Good : Unsuccessful;
  if (code != 0 && !session.traffic().empty())
    std::cerr << "What passed on the link is in "
              << files.writeSessionLog("wristlog " + session.main().Get_Version() + ", retrieve --model " +
                                       options.Model + ", code " + std::to_string(code) + ": " + meaning +
                                       "\n\n" + session.traffic())
              << "; send it along when you ask for help.\n";

  if (session.asJson()) {
    Json document = recordingJson(*logger, verdict, lowBattery);
    document["return_code"] = code;
    document["return_code_meaning"] = meaning;
    document["low_battery_detected"] = lowBattery;
    document["logger"] = loggerJson(*logger);
    document["subject"] = subjectJson(*subject);
    print(document);
    return status;
  }
  std::ostream& out = code == 0 ? std::cout : std::cerr;
  if (code != 0) out << "Code " << code << ": " << meaning << '\n';
  if (verdict)
    out << wordsFor(*verdict) << ' ' << counted(logger->Get_Samples(), "epoch") << " of "
        << counted(logger->Get_EpochLength(), "second") << " from logger " << logger->Get_SerialNumber()
        << ".\n";
  if (lowBattery) out << "The logger's battery is low.\n";
  if (hasRecording) out << "Written to " << options.Folder << ".\n";
  return status;
}

}  // namespace wristlog
