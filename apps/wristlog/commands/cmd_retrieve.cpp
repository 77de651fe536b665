#include <nlohmann/json.hpp>
#include <optional>

#include "commands/commands.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "recording/retrieved_recording.h"
#include "session/process.h"
#include "session/session.h"
#include "words/counted.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

int runRetrieve(const CommonOptions& common, const RetrieveOptions& options) {
  const RecordingFiles files(options.Folder, options.Force);
  files.prepare();
  constexpr bool KeepTraffic = true;
  Session session(common, KeepTraffic);
  const hw::enmLoggerPointer model = modelFromName(options.Model);

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

  RetrievedRecording recording(*logger, verdict, lowBattery);
  // A request that came before there was a logger to abort.
  if (interruptRequested() && code != 0 && !recording.isThere()) code = hw::ReturnCode::Aborted;
  std::string meaning = explanationOf(code, model);
  if (const std::string trouble = recording.trouble(); !trouble.empty()) {
    meaning = code == 0 || code == NotWhole ? trouble : meaning + " " + trouble;
    if (code == 0) code = NotWhole;
    verdict.reset();
  }
  bool drawn = true;
  const bool kept = recording.mayBeWritten(files);
  if (kept) recording.write(files);
  if (recording.isSound()) {
    verdict = recording.decode().Result;
    try {
      files.writePictures(recording.decode());
    } catch (const hw::Failure& failure) {
      drawn = false;
      complain() << wordsFor(failure) << '\n';
    }
  }
  hw::Class_VardenLogger& shown = recording.isSound() ? *recording.decode().Logger : *logger;
  const int status = code == 0 && drawn ? Good : Unsuccessful;
  if (code != 0 && !session.traffic().empty())
    complain() << "What passed on the link is in "
               << files.writeSessionLog("wristlog " + session.main().Get_Version() + ", retrieve --model " +
                                        options.Model + ", code " + std::to_string(code) + ": " + meaning +
                                        "\n\n" + session.traffic())
               << "; send it along when you ask for help.\n";

  if (session.asJson()) {
    Json document = recordingJson(shown, verdict, lowBattery);
    document["bytes_received"] = recording.bytes();
    document["bytes_in_logger"] = recording.bytesInLogger();
    document["return_code"] = code;
    document["return_code_meaning"] = meaning;
    document["low_battery_detected"] = lowBattery;
    document["logger"] = loggerJson(shown);
    document["subject"] = subjectJson(*subject);
    print(document);
    return status;
  }
  const Speech out = code == 0 ? say() : complain();
  if (code != 0) out << "Code " << code << ": " << meaning << '\n';
  if (verdict)
    out << wordsFor(*verdict) << ' ' << counted(shown.Get_Samples(), "epoch") << " of "
        << counted(shown.Get_EpochLength(), "second") << " from logger " << shown.Get_SerialNumber() << ".\n";
  if (lowBattery) out << "The logger's battery is low.\n";
  if (kept) out << "Written to " << options.Folder << ".\n";
  if (!kept && recording.isThere()) out << "The recording in " << options.Folder << " was left as it is.\n";
  return status;
}

}  // namespace wristlog
