#include <string>

#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"
#include "workflows/pendrel/pendrel_run.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int16_t LastPort = 64;
constexpr const char* Section = "Communications";
constexpr const char* Key = "COMport";

/// Empty without a home folder.
std::string settingsFile() {
  const std::string& folder = globals().UserDataFolder;
  return folder.empty() ? folder : joinPath(folder, "Settings.INI");
}

/// A port that does not exist, is held, has locked up or is silent is no Pendreader. Its failure is
/// forgotten, so that it neither ends the search nor counts as the failure of a later command.
bool hasPrompt(Pendrel& logger, std::int16_t port) {
  bool prompt = false;
  ignoringFailures([&] { prompt = logger.fncOpenCOMport(port, true) == 0 && logger.fncGetPrompt(); });
  globals().emptyErrorStack();
  return prompt;
}

}  // namespace

std::int32_t PendrelWorkflows::SearchAndSetLegacyCOMport(std::int16_t& FoundPort,
                                                         std::string& FoundPortText) {
  PendrelRun run(state_, "SearchAndSetLegacyCOMport",
                 {NoCharacters, NoFinalCharacter, WrongCharacters, PendrelChecksum});
  return run.run([&] {
    state_.AbortFlag = false;
    for (std::int16_t port = 1; port <= LastPort; ++port) {
      if (TryingPort) TryingPort(port);
      const bool found = run.step([&] { return hasPrompt(state_.pendrel(), port); });
      if (run.aborted()) return;
      if (!found) continue;
      FoundPort = port;
      FoundPortText = std::to_string(port);
      state_.LegacyCOMport = port;
      run.code = fncWriteCOMportToINI(port);
      return;
    }
    run.endWith(ReturnCode::NotFound);
  });
}

std::int32_t PendrelWorkflows::fncReadCOMportFromINI(std::int16_t& Port, std::string& Text) {
  return codeOf("fncReadCOMportFromINI", [&] {
    const std::string file = settingsFile();
    if (file.empty() || !Tools().fncCheckPathforReadWrite(file)) return ReturnCode::NotWritable;
    if (!Tools().fncFilePathExists(file)) return ReturnCode::NoPortSetting;
    const std::string value = Tools().fncINIread(Section, Key, "", file);
    const auto number = parseUngroupedNumber(value);
    if (!number) return ReturnCode::NoPortSetting;
    Port = roundToInt16(*number);
    Text = value;
    return ReturnCode::Success;
  });
}

std::int32_t PendrelWorkflows::fncWriteCOMportToINI(std::int16_t Port) {
  return codeOf("fncWriteCOMportToINI", [&] {
    const std::string file = settingsFile();
    const bool written = !file.empty() && Tools().fncCheckPathforReadWrite(file) &&
                         Tools().fncINIwrite(Section, Key, std::to_string(Port), file);
    return written ? ReturnCode::Success : ReturnCode::NotWritable;
  });
}

}  // namespace hy_wristlog
