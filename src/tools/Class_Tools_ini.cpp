#include <cerrno>
#include <string>

#include "platform/folder_lock.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/ini_file.h"
#include "tools/paths.h"

namespace hy_wristlog {
namespace {

using platform::SystemError;

constexpr std::size_t LongestValue = 4095;

/// The text, cut between two characters when it is too long.
std::string_view limited(std::string_view text) {
  if (text.size() <= LongestValue) return text;
  std::size_t size = LongestValue;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) --size;
  return text.substr(0, size);
}

std::string readOrNothing(const std::string& native) {
  try {
    return platform::current().files().readUpTo(platform::Files::LongestText, native);
  } catch (const SystemError& error) {
    if (error.Number == ENOENT) return {};
    throw;
  }
}

/// Reads the file, lets `change` work on it and writes it when that says that something changed.
template <class Change>
bool changeFile(std::string_view file, Change change) {
  try {
    const std::string native = nativePath(file);
    platform::Files& files = platform::current().files();
    const auto lock = platform::lockFolder(files, platform::folderOf(native));
    const std::string content = readOrNothing(native);
    if (IniFile::isUtf16(content)) return false;
    IniFile ini(content);
    if (change(ini)) files.write(native, ini.content());
    return true;
  } catch (const SystemError&) {
    return false;
  }
}

}  // namespace

std::string Class_Tools::fncINIread(std::string_view section, std::string_view key,
                                    std::string_view defaultValue, std::string_view file) {
  try {
    const IniFile ini(platform::current().files().readUpTo(platform::Files::LongestText, nativePath(file)));
    return std::string(limited(ini.value(section, key).value_or(defaultValue)));
  } catch (const SystemError&) {
    return std::string(limited(defaultValue));
  }
}

bool Class_Tools::fncINIwrite(std::string_view section, std::string_view key, std::string_view value,
                              std::string_view file) {
  if (!IniFile::canHold(section) || !IniFile::canHold(key) || !IniFile::canHold(value)) return false;
  return changeFile(file, [&](IniFile& ini) {
    ini.setValue(section, key, value);
    return true;
  });
}

bool Class_Tools::fncINIdeleteItem(std::string_view section, std::string_view key, std::string_view file) {
  return changeFile(file, [&](IniFile& ini) { return ini.removeKey(section, key); });
}

bool Class_Tools::fncINIdeleteSection(std::string_view section, std::string_view file) {
  return changeFile(file, [&](IniFile& ini) { return ini.removeSection(section); });
}

}  // namespace hy_wristlog
