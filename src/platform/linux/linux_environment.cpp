#include "platform/linux/linux_environment.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <dlfcn.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>

#include "platform/linux/locale_patterns.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::int32_t DocumentsFolder = 5, UserDataFolder = 26, CommonDataFolder = 35;
constexpr const char* LibraryName = "HY_Wristlog";

struct User {
  std::string Name, Home, Comment;
};

std::optional<User> currentUser() {
  std::array<char, 16384> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  const int error = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr) {
    errno = error != 0 ? error : ENOENT;
    return std::nullopt;
  }
  return User{found->pw_name, found->pw_dir, found->pw_gecos != nullptr ? found->pw_gecos : ""};
}

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::optional<std::string> folderVariable(std::string_view name) {
  auto value = environmentVariable(name);
  if (!value || !value->starts_with('/')) return std::nullopt;
  return withoutTrailingSlash(std::move(*value));
}

std::string homeFolder() {
  if (auto home = folderVariable("HOME")) return *home;
  const auto user = currentUser();
  return user && user->Home.starts_with('/') ? withoutTrailingSlash(user->Home) : std::string{};
}

std::string folderUnderHome(std::string_view variable, std::string_view otherwise) {
  if (auto folder = folderVariable(variable)) return *folder;
  std::string home = homeFolder();
  if (home.empty()) return home;
  return (home == "/" ? "" : home) + "/" + std::string{otherwise};
}

std::string configFolder() { return folderUnderHome("XDG_CONFIG_HOME", ".config"); }

/// The value of XDG_DOCUMENTS_DIR="$HOME/Documents" or ="/a/path"; a backslash quotes the next character.
std::string documentsEntry(std::string_view file, const std::string& home) {
  constexpr std::string_view Name = "XDG_DOCUMENTS_DIR=\"";
  std::string result;
  while (!file.empty()) {
    const std::string_view line = file.substr(0, file.find('\n'));
    file.remove_prefix(std::min(line.size() + 1, file.size()));
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string_view::npos || !line.substr(first).starts_with(Name)) continue;
    std::string_view rest = line.substr(first + Name.size());
    std::string value;
    constexpr std::string_view Home = "$HOME";
    if (rest.starts_with(Home)) {
      value = home;
      rest.remove_prefix(Home.size());
    }
    for (std::size_t i = 0; i < rest.size() && rest[i] != '"'; ++i) {
      if (rest[i] == '\\' && i + 1 < rest.size()) ++i;
      value += rest[i];
    }
    if (value.starts_with('/')) result = withoutTrailingSlash(value);
  }
  return result;
}

std::string documentsFolder() {
  const std::string home = homeFolder();
  const auto dirs = readSmallFile(configFolder() + "/user-dirs.dirs", 1 << 16);
  const std::string entry = dirs ? documentsEntry(*dirs, home) : std::string{};
  return entry.empty() ? home : entry;
}

bool canWriteIn(const std::string& folder) {
  return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::string commonFolder() {
  std::string shared = "/var/lib";
  const std::string own = shared + "/" + LibraryName;
  struct stat status {};
  const bool exists = ::lstat(own.c_str(), &status) == 0;
  if (exists ? S_ISDIR(status.st_mode) && canWriteIn(own) : canWriteIn(shared)) return shared;
  return folderUnderHome("XDG_STATE_HOME", ".local/state");
}

std::string realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved{::realpath(path.c_str(), nullptr), &std::free};
  return resolved ? std::string{resolved.get()} : std::string{};
}

void marker() {}

}  // namespace

std::string systemErrorText(std::int32_t number) {
  const char* text = ::strerrordesc_np(number);
  return text != nullptr ? text : "";
}

std::string userDataFolder(Environment& environment) {
  const std::string folder = environment.specialFolder(UserDataFolder);
  return folder.empty() ? folder : folder + "/" + LibraryName;
}

std::string LinuxEnvironment::specialFolder(std::int32_t code) {
  switch (code) {
    case DocumentsFolder:
      return documentsFolder();
    case UserDataFolder:
      return configFolder();
    case CommonDataFolder:
      return commonFolder();
    default:
      return {};
  }
}

std::string LinuxEnvironment::libraryFolder() {
  Dl_info info{};
  std::string file;
  if (::dladdr(reinterpret_cast<const void*>(&marker), &info) != 0 && info.dli_fname != nullptr)
    file = info.dli_fname;
  // In a program that the library is linked into, `file` is the name it was called by, which need not be a
  // path.
  const std::string path = realPath(file.starts_with('/') ? file : "/proc/self/exe");
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return {};
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string LinuxEnvironment::localeInfo(LocaleItem item) { return localePattern(item); }

std::optional<std::string> LinuxEnvironment::variable(std::string_view name) {
  return environmentVariable(name);
}

std::string LinuxEnvironment::userName() {
  const auto user = currentUser();
  if (!user) raiseSystemError();
  return user->Name;
}

std::string LinuxEnvironment::fullName() {
  const auto user = currentUser();
  if (!user) raiseSystemError();
  return user->Comment.substr(0, user->Comment.find(','));
}

std::string LinuxEnvironment::computerName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  if (::gethostname(name.data(), name.size()) != 0) raiseSystemError();
  return name.data();
}

std::string LinuxEnvironment::domainName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  if (::getdomainname(name.data(), name.size()) != 0) raiseSystemError();
  const std::string domain = name.data();
  return domain.empty() || domain == "(none)" ? computerName() : domain;
}

std::string LinuxEnvironment::errorText(std::int32_t number) { return systemErrorText(number); }

}  // namespace hy_wristlog::platform
