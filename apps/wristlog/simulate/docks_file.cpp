#include "simulate/docks_file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "base/ascii.h"
#include "hy_wristlog/failure.h"
#include "platform/folder_lock.h"
#include "platform/platform.h"
#include "recording/signals_held.h"
#include "words/say.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

namespace {

constexpr std::string_view MarkBegins = "; Kept as long as process ", MarkEnds = " serves the logger.\n";

std::string ownMark() { return std::string(MarkBegins) + std::to_string(::getpid()) + std::string(MarkEnds); }

/// A file of docks, divided into one of its sections and all others.
struct Divided {
  std::string Section, Others;
};

/// The name of the section that begins with the line; empty when none does.
std::string_view sectionBegunBy(std::string_view line) {
  constexpr std::string_view Blank = " \t\r\n";
  const std::size_t bracket = line.find_first_not_of(Blank);
  if (bracket == line.npos || line[bracket] != '[') return {};
  line.remove_prefix(bracket + 1);
  line = line.substr(0, line.find(']'));
  const std::size_t first = line.find_first_not_of(Blank);
  return first == line.npos ? line : line.substr(first, line.find_last_not_of(Blank) - first + 1);
}

Divided divide(const std::string& text, const std::string& name) {
  Divided divided;
  bool inside = false;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    const std::string line = text.substr(begin, end - begin);
    if (const std::string_view begun = sectionBegunBy(line); !begun.empty())
      inside = hy_wristlog::equalsIgnoringCase(begun, name);
    (inside ? divided.Section : divided.Others) += line;
    begin = end;
  }
  return divided;
}

/// Whether the section may be replaced: it is this server's, or was left behind by one that was killed.
bool isFree(const std::string& section) {
  if (section.empty() || section.find(ownMark()) != std::string::npos) return true;
  const std::size_t mark = section.find(MarkBegins);
  if (mark == std::string::npos) return false;
  pid_t process = 0;
  std::from_chars(section.data() + mark + MarkBegins.size(), section.data() + section.size(), process);
  return process <= 0 || (::kill(process, 0) != 0 && errno == ESRCH);
}

std::string contentOf(platform::Files& files, const std::string& file) {
  try {
    return files.readUpTo(platform::Files::LongestText, file);
  } catch (const platform::SystemError& error) {
    if (error.Number == ENOENT) return {};
    throw;
  }
}

}  // namespace

std::string DockSection::text() const {
  std::string text = "[" + name() + "]\n";
  if (Kind == sim::DockKind::Quillander) text += "VendorID=5245\nProductID=4000\n";
  if (Kind == sim::DockKind::TolkaFirst) text += "VendorID=5245\nProductID=4001\n";
  if (Kind == sim::DockKind::TolkaSecond) text += "VendorID=5245\nProductID=4002\n";
  text += "COMport=" + std::to_string(ComPort) + "\nDevice=" + Device + "\n";
  return Fingerprint.empty() ? text : text + "Fingerprint=" + Fingerprint + "\n";
}

KeptSection::~KeptSection() {
  if (section_.Device.empty()) return;
  section_.Device.clear();
  try {
    change();
  } catch (const hy_wristlog::Failure& failure) {
    complain() << "[" << section_.name() << "] stays in " << failure.Description << ".\n";
  }
}

void KeptSection::put(const DockSection& section) {
  const DockSection former = std::exchange(section_, section);
  try {
    change();
  } catch (...) {
    section_ = former;
    throw;
  }
}

void KeptSection::change() const {
  const SignalsHeld held;
  platform::Files& files = platform::current().files();
  try {
    const auto lock = platform::lockFolder(files, platform::folderOf(file_));
    auto [present, text] = divide(contentOf(files, file_), section_.name());
    const bool takesOut = section_.Device.empty();
    if (takesOut && present.find(ownMark()) == std::string::npos) return;
    if (!isFree(present))
      throw hy_wristlog::Failure(
          hy_wristlog::FailureNumber::PermissionDenied, "wristlog",
          file_ + " has a section [" + section_.name() + "] already, which stays. Choose another --port");
    if (!takesOut) {
      if (!text.empty() && !text.ends_with('\n')) text += '\n';
      text += section_.text() + ownMark();
    }
    if (text.empty())
      files.remove(file_);
    else
      files.write(file_, text);
  } catch (const platform::SystemError& error) {
    throw hy_wristlog::Failure(hy_wristlog::FailureNumber::PathFileAccess, "wristlog",
                               file_ + ": " + platform::current().environment().errorText(error.Number));
  }
}

}  // namespace wristlog
