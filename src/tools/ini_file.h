#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hy_wristlog {

/// The lines of an INI file. Names of sections and keys in any case; values are trimmed and lose one pair of
/// quotes around them when read. Changes keep all other lines.
class IniFile {
 public:
  explicit IniFile(std::string_view content);
  /// Raises TypeMismatch for a content of `path` that is not UTF-8. The description says what it seems to be.
  static void requireUtf8(std::string_view content, const std::string& path);
  /// Whether the content is, or begins as, text of two bytes a character.
  static bool isUtf16(std::string_view content);

  std::optional<std::string_view> value(std::string_view section, std::string_view key) const;
  bool hasSections() const;
  void setValue(std::string_view section, std::string_view key, std::string_view value);
  /// These two return false when there was no such key or section.
  bool removeKey(std::string_view section, std::string_view key);
  bool removeSection(std::string_view section);
  std::string content() const;

  /// False for a name or value with line breaks.
  static bool canHold(std::string_view text);
  /// The value, in quotes if it would otherwise be read back differently.
  static std::string quotedIfNeeded(std::string_view value);

 private:
  /// A section's lines with its heading; no value when it is missing.
  struct Range {
    std::size_t First = 0, End = 0;
  };

  std::vector<std::string>::iterator at(std::size_t index);
  Range findSection(std::string_view section) const;
  std::optional<std::size_t> findKey(Range range, std::string_view key) const;

  std::vector<std::string> lines_;
  bool marked_ = false;
};

}  // namespace hy_wristlog
