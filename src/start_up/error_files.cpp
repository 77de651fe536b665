// The folder of the error logs is the common data folder: `commonFolder` in
// platform/linux/linux_environment.cpp.
#include "start_up/error_files.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "base/faults.h"
#include "base/formats.h"
#include "errors/GlobalState.h"
#include "errors/error_xml.h"
#include "platform/folder_lock.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

struct OwnAction {
  std::int32_t Number;
  std::int32_t Action;
  bool Show, Log;
  std::int16_t Limit;
  const char* Text;
};

constexpr std::array<OwnAction, 12> OwnActions{{
    {401, errResumeNext, false, false, 10, ""},
    {35601, errRaise, false, false, 6, ""},
    {23333, errRaise, false, false, 10, ""},
    {PermissionDenied, errRaise, true, true, 10,
     "The file or database you are trying to access vbcrlf is locked or is in use by another program. vbcrlf "
     "Please close all other programs that may be vbcrlf using this file and retry this operation."},
    {ObjectUnloaded, errResumeNext, false, false, 2, ""},
    {PathFileAccess, errExit, true, true, 2,
     "The logged on user does not have write permissions to a file vbcrlf or folder needed by Somnaris. "
     "Please "
     "contact your system vbcrlf administrator to gain full access to your computer"},
    {25000, errResumeNext, false, true, 2, ""},
    {-2147217865, errClose, true, true, 2,
     "The database that you are using may have been deleted or moved vbcrlf or a network share that the "
     "database is stored on may be vbcrlf temporarily disconected. vbcrlf vbcrlf You will not be able to "
     "continue until you have restored vbcrlf the connection. vbcrlf vbcrlf The software will now close. "
     "If this problem persists please vbcrlf contact Halcyra Product Support."},
    {ControlBlockFailure, errRaiseAll, false, false, 1, ""},
    {ClosedWhileInUse, errRaiseAll, false, false, 1, ""},
    {PortStateFailure, errRaiseAll, false, false, 1, ""},
    {-2147417848, errResume, false, true, 10, ""},
}};

bool isFolder(const std::string& path) {
  return platform::current().files().state(path).Kind == platform::FileKind::Folder;
}

/// A file that cannot be read counts as one that exists: its reader tells of it.
bool isBlank(const std::string& path) {
  try {
    return platform::current().files().read(path).find_first_not_of(" \t\r\n") == std::string::npos;
  } catch (const platform::SystemError&) {
    return false;
  }
}

/// The dispatcher itself writes the log. A failure here must not come back to it, so neither this nor the
/// writing is framed by procedures.
void makeFolders(const std::string& folder) {
  withFileFaults(folder, [&] {
    const bool forEveryone = !belongsToUser(folder + "/");
    for (std::size_t end = 0; end != std::string::npos && !isFolder(folder);) {
      end = folder.find('/', end + 1);
      const std::string level = folder.substr(0, end);
      if (!isFolder(level)) platform::current().files().makeFolder(level, forEveryone);
    }
  });
}

/// A name that is free: another command or process may have logged in the same second.
std::string freeLogPath(const std::string& folder, double time) {
  const std::string start = folder + "/" + formatDate(time, "yyyy-mm-dd_Hh-Nn-Ss") + " ErrorLog";
  std::string path = start + ".XML";
  for (int number = 2; platform::current().files().state(path).Kind != platform::FileKind::Missing; ++number)
    path = start + " (" + std::to_string(number) + ").XML";
  return path;
}

}  // namespace

std::vector<Class_ErrorAction> fncPopulateXMLErrorActions() {
  const std::string path = joinPath(platform::current().environment().libraryFolder(), "ErrorActions.XML");
  if (!Tools().fncFilePathExists(path) || isBlank(path)) return {};
  const GrowingArray<std::string> lines = Tools().fncReadFile2Array(path);
  return parseErrorActions({lines.begin(), lines.end()});
}

/// The library's own actions are in place before the site's file is read, so that a file that cannot be read
/// costs only its own actions.
void fncLoadGlobalErrors() {
  std::vector<Class_ErrorAction>& actions = globals().ErrorActions;
  actions.clear();
  for (const OwnAction& own : OwnActions) {
    Class_ErrorAction action;
    action.ErrorNumber = own.Number;
    action.ErrorModule = Generic;
    action.ErrorProcedure = Generic;
    action.ErrorAction = own.Action;
    action.ShowMessageBox = own.Show;
    action.LogError = own.Log;
    action.ProcErrorCountLimit = own.Limit;
    action.CustomMessageText = own.Text;
    actions.push_back(action);
  }
  const std::vector<Class_ErrorAction> site = fncPopulateXMLErrorActions();
  actions.insert(actions.begin(), site.begin(), site.end());
}

void fncSaveXMLErrorRecords() {
  GlobalState& state = globals();
  if (state.ErrorStack.size() < 2 || !state.ErrorStack[1]) return;
  if (state.CommonDataFolder.empty()) fault::raise(fault::PathNotFound);
  std::string text;
  for (const std::string& line : errorLogLines(state.ErrorStack, state.VersionFull))
    text.append(line).append("\r\n");
  const std::string folder = nativePath(joinPath(state.CommonDataFolder, "Errors"));
  makeFolders(folder);
  platform::Files& files = platform::current().files();
  std::unique_ptr<platform::FolderLock> lock;
  std::string path = state.ErrorLogPath;
  if (path.empty())
    withFileFaults(folder, [&] {
      lock = platform::lockFolder(files, folder);
      path = freeLogPath(folder, state.ErrorStack[1]->ErrorTime);
    });
  withFileFaults(path, [&] { files.write(path, text); });
  state.ErrorLogPath = path;
}

}  // namespace hy_wristlog
