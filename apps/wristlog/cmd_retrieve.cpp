#include <iostream>
#include <optional>

#include "commands.h"
#include "json_output.h"
#include "meanings.h"
#include "recording_files.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

int runRetrieve(const CommonOptions& common, const RetrieveOptions& options) {
  Session session(common);
  const RecordingFiles files(options.Folder, options.Force);
  if (!options.Folder.empty()) files.prepare();

  constexpr auto NotDecoded = static_cast<hw::enmDecodeResult>(-1);
  std::shared_ptr<hw::Class_VardenLogger> logger;
  auto subject = std::make_shared<hw::Class_Subject>();
  hw::enmDecodeResult result = NotDecoded;
  bool lowBattery = false;
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  const std::int32_t code = session.main().Retrieve(modelFromName(options.Model), logger, subject, result,
                                                    &lowBattery, nullptr, options.IgnoreWarnings);
  session.endProgress();
  std::optional<hw::enmDecodeResult> verdict;
  if (result != NotDecoded) verdict = result;

  bool written = false;
  if (!options.Folder.empty() && !engineering::rawData(*logger).empty()) {
    if (verdict)
      files.write(*logger, summaryJson(*logger, subject.get(), verdict, lowBattery));
    else
      files.writeRaw(*logger);
    written = true;
  }

  if (session.asJson()) {
    Json document = recordingJson(*logger, verdict, lowBattery);
    document["return_code"] = code;
    document["return_code_meaning"] = meaningOf(code);
    document["low_battery_detected"] = lowBattery;
    document["logger"] = loggerJson(*logger);
    document["subject"] = subjectJson(*subject);
    print(document);
    return code == 0 ? Good : Unsuccessful;
  }
  std::ostream& out = code == 0 ? std::cout : std::cerr;
  if (code != 0) out << "Code " << code << ": " << meaningOf(code) << '\n';
  if (verdict)
    out << wordsFor(*verdict) << ' ' << logger->Get_Samples() << " epochs of " << logger->Get_EpochLength()
        << " seconds from logger " << logger->Get_SerialNumber() << ".\n";
  if (lowBattery) out << "The logger's battery is low.\n";
  if (written) out << "Written to " << options.Folder << ".\n";
  return code == 0 ? Good : Unsuccessful;
}

}  // namespace wristlog
