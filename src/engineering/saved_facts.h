#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ini_file.h"

/// The values of a config.ini that tell of a saved recording, of either family.
namespace hy_wristlog::engineering::facts {

inline constexpr std::string_view RecordingSection = "Recording";

struct Key {
  std::string_view Section, Name;
};
inline constexpr Key Bytes{RecordingSection, "Bytes"}, BytesInLogger{RecordingSection, "Bytes in Logger"},
    Digest{RecordingSection, "SHA-256"}, Part{RecordingSection, "Part"},
    Retrieved{RecordingSection, "Retrieved"}, Zone{RecordingSection, "Time Zone"};

inline std::string_view value(const IniFile& file, const Key& key) {
  return file.value(key.Section, key.Name).value_or("");
}
/// Raises what `dateFromText` raises; none when the file does not tell.
std::optional<double> date(const IniFile& file, const Key& key);
/// Does nothing for a text that an INI file cannot hold, nor for an empty one.
void put(IniFile& file, const Key& key, std::string_view value);
void put(IniFile& file, const Key& key, std::int64_t value);
void put(IniFile& file, const Key& key, float value);
void copy(const IniFile& from, std::span<const Key> keys, IniFile& into);

/// None for text that is no hexadecimal digits, two a byte.
std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text);
/// Tells how many bytes there are of how many, their digest, and whether they are only a part.
void putBytes(IniFile& file, const std::vector<std::uint8_t>& raw, std::int64_t inLogger);
std::string digestOf(const std::vector<std::uint8_t>& bytes);

}  // namespace hy_wristlog::engineering::facts
