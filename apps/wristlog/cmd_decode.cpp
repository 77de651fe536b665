#include <iostream>
#include <optional>

#include "commands.h"
#include "counted.h"
#include "fixed_clock.h"
#include "json_output.h"
#include "meanings.h"
#include "recording_files.h"
#include "saved_recording.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

/// Puts a world in the place of the thread's for a while.
class WorldScope {
 public:
  explicit WorldScope(std::shared_ptr<platform::Platform> world) : former_(platform::use(std::move(world))) {}
  WorldScope(const WorldScope&) = delete;
  WorldScope& operator=(const WorldScope&) = delete;
  ~WorldScope() { platform::use(std::move(former_)); }

 private:
  std::shared_ptr<platform::Platform> former_;
};

hw::Class_Subject subjectOf(const hw::Class_VardenLogger& logger) {
  hw::Class_Subject subject;
  subject.Let_Identity(logger.Get_SubjectIdentity());
  subject.Let_Initials(logger.Get_SubjectInitials());
  subject.Let_Gender(logger.Get_SubjectGender());
  subject.Let_DOB(logger.Get_SubjectDOB());
  subject.Let_GUID(logger.Get_SubjectGUID());
  subject.Let_Height(logger.Get_SubjectHeight());
  subject.Let_Weight(logger.Get_SubjectWeight());
  return subject;
}

}  // namespace

int runDecode(const CommonOptions& common, const DecodeOptions& options) {
  std::optional<WorldScope> scope;
  if (!options.Now.empty()) scope.emplace(machineAt(engineering::dateFromText(options.Now)));
  const RecordingFiles files(options.Folder, options.Force);
  if (!options.Folder.empty()) files.prepare();

  const DecodedRecording saved =
      decodeRecording({{}, options.ConfigFile, options.RawFile}, options.Diagnostic);
  const auto& logger = saved.Logger;
  if (!options.Folder.empty()) {
    files.write(*logger, summaryJson(*logger, subjectOf(*logger), saved.Result, saved.LowBattery));
    files.writePictures(*logger, saved.Result, saved.LowBattery);
  }

  if (common.AsJson) {
    print(recordingJson(*logger, saved.Result, saved.LowBattery));
    return Good;
  }
  std::cout << wordsFor(saved.Result) << ' ' << counted(logger->Get_Samples(), "epoch") << " of "
            << counted(logger->Get_EpochLength(), "second") << ", from "
            << engineering::isoDate(logger->Get_StartTimeGMT(), "Z") << ".\n";
  for (const std::string& event : engineering::events(*logger)) std::cout << event << '\n';
  if (!options.Folder.empty()) std::cout << "Written to " << options.Folder << ".\n";
  return Good;
}

}  // namespace wristlog
