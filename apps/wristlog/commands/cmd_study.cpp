#include "commands/cmd_study.h"

#include <nlohmann/json.hpp>

#include "hy_wristlog/failure.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "session/terminal_host.h"
#include "words/counted.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

Json documentOf(const StudyOptions& options, const StudyResult& result) {
  Json unreadable = Json::array();
  for (const UnreadableFolder& folder : result.Unreadable)
    unreadable.push_back({{"folder", folder.Folder}, {"error", folder.Words}});
  return {{"written_to", options.Out}, {"found", result.Found},
          {"decoded", result.Decoded}, {"unchanged", result.Unchanged},
          {"failed", result.Failed},   {"removed", result.Removed},
          {"unreadable", unreadable},  {"not_of_this_study", result.Strangers},
          {"recordings", result.Rows}};
}

void tell(const StudyOptions& options, const StudyResult& result) {
  for (const Json& row : result.Rows) {
    const auto& folder = row["folder"].get_ref<const std::string&>();
    if (const Json& error = row["error"]; error.is_string())
      complain() << folder << ": " << error.get_ref<const std::string&>() << '\n';
    if (const Json& copies = row["copies"]; copies.is_string())
      say() << folder << " counts once; it is also in " << copies.get_ref<const std::string&>() << '\n';
  }
  for (const std::string& partition : result.Removed)
    say() << partition << " is removed: no recording of this study belongs there any more.\n";
  for (const UnreadableFolder& folder : result.Unreadable)
    complain() << folder.Folder
               << " cannot be read now, and is as the last study has met it: " << folder.Words << '\n';
  for (const std::string& file : result.Strangers)
    complain() << file << " is not of this study, but whoever reads its tables reads it too.\n";
  say() << counted(static_cast<std::int64_t>(result.Found), "recording") << ": " << result.Decoded
        << " decoded, " << result.Unchanged << " as before, " << result.Failed << " with an error.\n";
  say() << "Written to " << options.Out << ": recordings.csv, series, events, datapackage.json.\n";
}

}  // namespace

int runStudy(const CommonOptions& common, const StudyOptions& options) {
  TerminalHost terminal(false, [] {});
  std::size_t lastDone = 0;
  const StudyEvents events{[&](std::size_t done, std::size_t found) {
                             lastDone = done;
                             terminal.showProgress(std::to_string(done) + " of " +
                                                   counted(static_cast<std::int64_t>(found), "recording"));
                           },
                           interruptRequested};
  const StudyResult result = study(options, events);
  terminal.endProgress();
  if (result.Stopped)
    throw hw::Failure(hw::ReturnCode::Aborted, "wristlog",
                      "Stopped after " + std::to_string(lastDone) + " of " +
                          counted(static_cast<std::int64_t>(result.Found), "recording") +
                          ". The same command goes on from there");
  if (common.AsJson)
    print(documentOf(options, result));
  else
    tell(options, result);
  return result.Failed > 0 || !result.Unreadable.empty() ? Unsuccessful : Good;
}

}  // namespace wristlog
