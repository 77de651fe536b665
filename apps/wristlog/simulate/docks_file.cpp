#include "simulate/docks_file.h"

#include <cerrno>

#include "hy_wristlog/failure.h"
#include "platform/folder_lock.h"
#include "platform/platform.h"
#include "recording/signals_held.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

namespace {

/// The text without the section of that heading, which ends at the next one.
std::string without(const std::string& heading, const std::string& text) {
  std::string rest;
  bool inside = false;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    const std::string line = text.substr(begin, end - begin);
    if (line.starts_with('[')) inside = line.starts_with(heading);
    if (!inside) rest += line;
    begin = end;
  }
  return rest;
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

void putIntoDocksFile(const std::string& file, const DockSection& section) {
  const SignalsHeld held;
  platform::Files& files = platform::current().files();
  try {
    const auto lock = platform::lockFolder(files, platform::folderOf(file));
    std::string text = without("[" + section.name() + "]", contentOf(files, file));
    if (!section.Device.empty()) {
      if (!text.empty() && !text.ends_with('\n')) text += '\n';
      text += section.text();
    }
    if (text.empty())
      files.remove(file);
    else
      files.write(file, text);
  } catch (const platform::SystemError& error) {
    throw hy_wristlog::Failure(hy_wristlog::FailureNumber::PathFileAccess, "wristlog",
                               file + ": " + platform::current().environment().errorText(error.Number));
  }
}

}  // namespace wristlog
