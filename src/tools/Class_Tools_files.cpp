#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "base/faults.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/guarded.h"
#include "tools/paths.h"

namespace hy_wristlog {
namespace {

using platform::FileKind;
using platform::FileState;
using platform::SystemError;

constexpr std::string_view Everyone = "Everyone";

platform::Files& files() { return platform::current().files(); }

/// Where the name after the last separator begins. Separators at the very end belong to the name.
std::size_t nameStart(std::string_view path) {
  std::size_t start = 0;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    const bool drive = path[i] == ':' && i == 1;
    if ((isPathSeparator(path[i]) || drive) && !isPathSeparator(path[i + 1])) start = i + 1;
  }
  return start;
}

std::string_view extension(std::string_view path) {
  const auto dot = path.find_last_of(". \\/");
  return dot == std::string_view::npos || path[dot] != '.' ? std::string_view{} : path.substr(dot);
}

std::string linesToText(std::span<const std::string> lines) {
  std::string text;
  for (const std::string& line : lines) text.append(line).append("\r\n");
  return text;
}

/// Takes one line off the front. A line ends with LF, CR or both.
std::string_view takeLine(std::string_view& text) {
  const auto end = std::min(text.find_first_of("\r\n"), text.size());
  const auto line = text.substr(0, end);
  text.remove_prefix(end);
  if (text.starts_with("\r\n"))
    text.remove_prefix(2);
  else if (!text.empty())
    text.remove_prefix(1);
  return line;
}

/// The folder of a path as the system can be asked for it.
std::string nativeFolder(std::string_view path) {
  const std::string folder = nativePath(Class_Tools::fncRemoveFileName(path, true));
  if (folder.empty()) return ".";
  return folder == "/" ? folder : folder.substr(0, folder.size() - 1);
}

bool isThere(const std::string& native) {
  const FileKind kind = files().state(native).Kind;
  return kind == FileKind::Folder || kind == FileKind::File;
}

bool isFile(const std::string& native) { return files().state(native).Kind == FileKind::File; }

void explainAccess(std::string_view problem, std::string_view path) {
  const std::string& app = globals().AppName;
  const std::string text = std::string(problem) + "\r\n" + app + " was unable to edit the permissions\r\n" +
                           "of a directory named: " + std::string(path) + "\r\n" +
                           "Other software users will have limited access to this directory\r\n" + app +
                           " may not be able to write to the database.\r\n" +
                           "Please contact your system adminstrator or \r\n" + "Halcyra Product Support" +
                           ".";
  platform::current().host().showMessageBox(app, text, static_cast<std::int32_t>(MessageBoxButton::Ok));
}

/// Makes a folder. One that was made but could not be opened to everyone is told to the user and is no
/// failure.
void makeFolder(const std::string& native, bool forEveryone) {
  try {
    files().makeFolder(native, forEveryone);
  } catch (const SystemError&) {
    if (files().state(native).Kind != FileKind::Folder) throw;
    explainAccess("Error: Unable to Add ACL to DACL", native);
    return;
  }
  if (forEveryone) Class_Tools::fncSetAccess(Everyone, native, -1);
}

bool makeFolders(std::string_view path) {
  const std::string folder = nativePath(Class_Tools::fncRemoveFileName(path, true));
  const bool forEveryone = !belongsToUser(folder);
  for (auto end = folder.find('/', 1); end != std::string::npos; end = folder.find('/', end + 1)) {
    const std::string prefix = folder.substr(0, end);
    if (!isThere(prefix)) makeFolder(prefix, forEveryone);
  }
  return files().state(folder.empty() ? "." : folder).Kind == FileKind::Folder;
}

bool canWriteIn(const std::string& folder) {
  const std::array<std::string, 2> lines = {"This is a test file",
                                            "You may delete it, but it should have be deleted"};
  const std::string testFile = nativePath(joinPath(folder, "MyTemp.txt"));
  files().write(testFile, linesToText(lines));
  const bool found = isFile(testFile);
  files().remove(testFile);
  return found;
}

}  // namespace

GrowingArray<std::string> Class_Tools::fncReadFile2Array(std::string_view path) {
  return guarded("fncReadFile2Array", [&] {
    const std::string native = nativePath(path);
    const std::string content =
        withFileFaults(native, [&] { return files().readUpTo(platform::Files::LongestText, native); });
    const auto mostLines = static_cast<std::size_t>(roundToInt32(static_cast<double>(content.size()) / 3.0));
    std::vector<std::string> found;
    for (std::string_view rest = content; !rest.empty();) {
      if (found.size() == mostLines) fault::raise(fault::Subscript);
      found.emplace_back(takeLine(rest));
    }
    GrowingArray<std::string> lines;
    lines.redim(1, static_cast<std::int32_t>(found.size()));
    std::move(found.begin(), found.end(), lines.begin());
    return lines;
  });
}

bool Class_Tools::fncSaveFile(std::string_view path, std::span<const std::string> lines) {
  return guarded("fncSaveFile", [&] {
    const std::string native = nativePath(path);
    withFileFaults(native, [&] { files().write(native, linesToText(lines)); });
    return true;
  });
}

std::string Class_Tools::fncRemovePath(std::string_view path) {
  path = cutAtNul(path);
  return std::string(path.substr(nameStart(path)));
}

std::string Class_Tools::fncReturnFileExtension(std::string_view path) {
  return std::string(extension(path));
}

std::string Class_Tools::fncRemoveFileName(std::string_view path, std::optional<bool> trailingBackslash) {
  std::string folder(extension(path).empty() ? path : path.substr(0, nameStart(path)));
  if (!trailingBackslash || folder.empty()) return folder;
  const bool closed = isPathSeparator(folder.back());
  if (*trailingBackslash && !closed) folder += pathSeparatorOf(folder);
  if (!*trailingBackslash && closed) folder.pop_back();
  return folder;
}

bool Class_Tools::fncFilePathExists(std::string_view path) {
  if (path.empty() || isPathSeparator(path.back())) return false;
  return guarded("fncFilePathExists", [&] {
    const std::string native = nativePath(path);
    return withFileFaults(native, [&] { return isFile(native); });
  });
}

bool Class_Tools::fncDirDirectory(std::string_view path) {
  return guarded("fncDirDirectory", [&] {
    const std::string folder = nativeFolder(path);
    return withFileFaults(folder, [&] { return isThere(folder); });
  });
}

std::string Class_Tools::fncCheckFileForReadWrite(std::string_view path) {
  return guarded("fncCheckFileForReadWrite", [&]() -> std::string {
    const std::string native = nativePath(path);
    return withFileFaults(native, [&] {
      const FileState state = files().state(native);
      if (state.Kind != FileKind::File) return "FileDoesNotExist";
      files().read(native);
      if (state.ReadOnly) return state.Hidden ? "FileExistsReadOnlyAndHidden" : "FileExistsReadOnly";
      return state.Hidden ? "FileExistsHidden" : "FileExistsFullAccess";
    });
  });
}

bool Class_Tools::fncCheckPathforReadWrite(std::string_view path) {
  try {
    const std::string folder = nativeFolder(path);
    if (!isThere(folder)) makeFolders(path);
    return isThere(folder) && canWriteIn(folder);
  } catch (const SystemError&) {
    return false;
  }
}

bool Class_Tools::fncMakeDirectorys(std::string_view path) {
  return guarded("fncMakeDirectorys",
                 [&] { return withFileFaults(nativeFolder(path), [&] { return makeFolders(path); }); });
}

bool Class_Tools::fncSetAccess(std::string_view account, std::string_view path, std::int32_t /*accessMask*/) {
  if (!equalsIgnoringCase(account, Everyone)) {
    explainAccess("Error: Unable to Lookup the Current User Account: " + std::string(account), path);
    return false;
  }
  try {
    if (isThere(nativePath(path))) return true;
  } catch (const SystemError&) {  // NOLINT(bugprone-empty-catch): told below like a missing path
  }
  explainAccess("Error: Unable to Get the File Security Descriptor", path);
  return false;
}

}  // namespace hy_wristlog
