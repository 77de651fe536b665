#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "base/ascii.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"

namespace hy_wristlog {
namespace {

using platform::SystemError;

constexpr std::size_t LongestValue = 4095;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view LineBreaks("\r\n\0", 3);

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string_view unquoted(std::string_view text) {
  const bool quoted =
      text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

/// The text, cut between two characters when it is too long.
std::string_view limited(std::string_view text) {
  if (text.size() <= LongestValue) return text;
  std::size_t size = LongestValue;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) --size;
  return text.substr(0, size);
}

std::optional<std::string_view> sectionName(std::string_view line) {
  line = trimmed(line);
  const auto end = line.find(']');
  if (!line.starts_with('[') || end == std::string_view::npos) return std::nullopt;
  return trimmed(line.substr(1, end - 1));
}

class IniFile {
 public:
  explicit IniFile(std::string_view content) {
    if (content.starts_with(ByteOrderMark)) {
      marked_ = true;
      content.remove_prefix(ByteOrderMark.size());
    }
    while (!content.empty()) {
      const auto end = std::min(content.find('\n'), content.size());
      std::string_view line = content.substr(0, end);
      if (line.ends_with('\r')) line.remove_suffix(1);
      lines_.emplace_back(line);
      content.remove_prefix(std::min(end + 1, content.size()));
    }
  }

  std::optional<std::string_view> value(std::string_view section, std::string_view key) const {
    const auto found = findKey(findSection(section), key);
    if (!found) return std::nullopt;
    const std::string_view line = lines_[*found];
    return unquoted(trimmed(line.substr(line.find('=') + 1)));
  }

  void setValue(std::string_view section, std::string_view key, std::string_view value) {
    const std::string line = std::string(key) + "=" + std::string(value);
    Range range = findSection(section);
    if (const auto found = findKey(range, key)) {
      lines_[*found] = line;
      return;
    }
    if (range.First == range.End) {
      lines_.push_back("[" + std::string(section) + "]");
      range.End = lines_.size();
    }
    while (trimmed(lines_[range.End - 1]).empty()) --range.End;
    lines_.insert(at(range.End), line);
  }

  bool removeKey(std::string_view section, std::string_view key) {
    const auto found = findKey(findSection(section), key);
    if (found) lines_.erase(at(*found));
    return found.has_value();
  }

  bool removeSection(std::string_view section) {
    const Range range = findSection(section);
    lines_.erase(at(range.First), at(range.End));
    return range.First != range.End;
  }

  std::string content() const {
    std::string content(marked_ ? ByteOrderMark : "");
    for (const std::string& line : lines_) content.append(line).append("\r\n");
    return content;
  }

 private:
  /// A section's lines with its heading; nothing when it is not there.
  struct Range {
    std::size_t First = 0, End = 0;
  };

  std::vector<std::string>::iterator at(std::size_t index) {
    return lines_.begin() + static_cast<std::ptrdiff_t>(index);
  }

  Range findSection(std::string_view section) const {
    for (std::size_t first = 0; first < lines_.size(); ++first) {
      const auto name = sectionName(lines_[first]);
      if (!name || !equalsIgnoringCase(*name, trimmed(section))) continue;
      std::size_t end = first + 1;
      while (end < lines_.size() && !sectionName(lines_[end])) ++end;
      return {first, end};
    }
    return {};
  }

  std::optional<std::size_t> findKey(Range range, std::string_view key) const {
    for (std::size_t i = range.First + 1; i < range.End; ++i) {
      const std::string_view line = trimmed(lines_[i]);
      const auto equals = line.find('=');
      if (line.starts_with(';') || equals == std::string_view::npos) continue;
      if (equalsIgnoringCase(trimmed(line.substr(0, equals)), trimmed(key))) return i;
    }
    return std::nullopt;
  }

  std::vector<std::string> lines_;
  bool marked_ = false;
};

bool hasLineBreak(std::string_view text) { return text.find_first_of(LineBreaks) != std::string_view::npos; }

std::string readOrNothing(const std::string& native) {
  try {
    return platform::current().files().read(native);
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
    IniFile ini(readOrNothing(native));
    if (change(ini)) platform::current().files().write(native, ini.content());
    return true;
  } catch (const SystemError&) {
    return false;
  }
}

}  // namespace

std::string Class_Tools::fncINIread(std::string_view section, std::string_view key,
                                    std::string_view defaultValue, std::string_view file) {
  try {
    const IniFile ini(platform::current().files().read(nativePath(file)));
    return std::string(limited(ini.value(section, key).value_or(defaultValue)));
  } catch (const SystemError&) {
    return std::string(limited(defaultValue));
  }
}

bool Class_Tools::fncINIwrite(std::string_view section, std::string_view key, std::string_view value,
                              std::string_view file) {
  if (hasLineBreak(section) || hasLineBreak(key) || hasLineBreak(value)) return false;
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
