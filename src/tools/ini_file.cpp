#include "tools/ini_file.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/code_page.h"
#include "base/faults.h"

namespace hy_wristlog {
namespace {

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

std::optional<std::string_view> sectionName(std::string_view line) {
  line = trimmed(line);
  const auto end = line.find(']');
  if (!line.starts_with('[') || end == std::string_view::npos) return std::nullopt;
  return trimmed(line.substr(1, end - 1));
}

}  // namespace

IniFile::IniFile(std::string_view content) {
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

void IniFile::requireUtf8(std::string_view content, const std::string& path) {
  const auto refuse = [&](const char* encoding) {
    fault::raise(fault::TypeMismatch, path + " is in " + encoding + ", not in UTF-8: save it as UTF-8");
  };
  if (isUtf16(content)) refuse("UTF-16");
  if (!utf16FromUtf8(content)) refuse("another encoding, such as code page 1252");
}

bool IniFile::isUtf16(std::string_view content) {
  if (content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF")) return true;
  const auto isAscii = [&](std::size_t i) { return content[i] != 0 && (content[i] & 0x80) == 0; };
  if (content.size() < 4) return false;
  return (isAscii(0) && content[1] == 0 && isAscii(2) && content[3] == 0) ||
         (content[0] == 0 && isAscii(1) && content[2] == 0 && isAscii(3));
}

std::optional<std::string_view> IniFile::value(std::string_view section, std::string_view key) const {
  const auto found = findKey(findSection(section), key);
  if (!found) return std::nullopt;
  const std::string_view line = lines_[*found];
  return unquoted(trimmed(line.substr(line.find('=') + 1)));
}

bool IniFile::hasSections() const {
  return std::any_of(lines_.begin(), lines_.end(),
                     [](const auto& line) { return sectionName(line).has_value(); });
}

void IniFile::setValue(std::string_view section, std::string_view key, std::string_view value) {
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

bool IniFile::removeKey(std::string_view section, std::string_view key) {
  const auto found = findKey(findSection(section), key);
  if (found) lines_.erase(at(*found));
  return found.has_value();
}

bool IniFile::removeSection(std::string_view section) {
  const Range range = findSection(section);
  lines_.erase(at(range.First), at(range.End));
  return range.First != range.End;
}

std::string IniFile::content() const {
  std::string content(marked_ ? ByteOrderMark : "");
  for (const std::string& line : lines_) content.append(line).append("\r\n");
  return content;
}

bool IniFile::canHold(std::string_view text) { return text.find_first_of(LineBreaks) == text.npos; }

std::string IniFile::quotedIfNeeded(std::string_view value) {
  const std::string text(value);
  return unquoted(trimmed(value)) == value ? text : '"' + text + '"';
}

std::vector<std::string>::iterator IniFile::at(std::size_t index) {
  return lines_.begin() + static_cast<std::ptrdiff_t>(index);
}

IniFile::Range IniFile::findSection(std::string_view section) const {
  for (std::size_t first = 0; first < lines_.size(); ++first) {
    const auto name = sectionName(lines_[first]);
    if (!name || !equalsIgnoringCase(*name, trimmed(section))) continue;
    std::size_t end = first + 1;
    while (end < lines_.size() && !sectionName(lines_[end])) ++end;
    return {first, end};
  }
  return {};
}

std::optional<std::size_t> IniFile::findKey(Range range, std::string_view key) const {
  for (std::size_t i = range.First + 1; i < range.End; ++i) {
    const std::string_view line = trimmed(lines_[i]);
    const auto equals = line.find('=');
    if (line.starts_with(';') || equals == std::string_view::npos) continue;
    if (equalsIgnoringCase(trimmed(line.substr(0, equals)), trimmed(key))) return i;
  }
  return std::nullopt;
}

}  // namespace hy_wristlog
