#include "engineering/saved_facts.h"

#include <charconv>

#include "base/ascii.h"
#include "engineering/dates.h"
#include "platform/digest.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog::engineering::facts {

std::optional<double> date(const IniFile& file, const Key& key) {
  const auto text = file.value(key.Section, key.Name);
  return text ? std::optional(dateFromText(*text)) : std::nullopt;
}

void put(IniFile& file, const Key& key, std::string_view value) {
  if (!value.empty() && IniFile::canHold(value))
    file.setValue(key.Section, key.Name, IniFile::quotedIfNeeded(value));
}
void put(IniFile& file, const Key& key, std::int64_t value) { put(file, key, std::to_string(value)); }
void put(IniFile& file, const Key& key, float value) {
  char text[32];
  put(file, key, std::string_view(text, std::to_chars(text, text + sizeof text, value).ptr));
}

void copy(const IniFile& from, std::span<const Key> keys, IniFile& into) {
  for (const Key& key : keys)
    if (const auto value = from.value(key.Section, key.Name)) put(into, key, *value);
}

std::optional<std::vector<std::uint8_t>> bytesOfHex(std::string_view text) {
  const std::string_view hex = trimBlanks(text);
  if (hex.empty() || hex.size() % 2 != 0 || hex.find_first_not_of("0123456789abcdefABCDEF") != hex.npos)
    return std::nullopt;
  std::vector<std::uint8_t> bytes(hex.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    std::from_chars(hex.data() + 2 * i, hex.data() + 2 * i + 2, bytes[i], 16);
  return bytes;
}

void putBytes(IniFile& file, const std::vector<std::uint8_t>& raw, std::int64_t inLogger) {
  const auto count = static_cast<std::int64_t>(raw.size());
  put(file, Bytes, count);
  put(file, BytesInLogger, inLogger);
  put(file, Digest, digestOf(raw));
  if (count < inLogger) put(file, Part, std::int64_t{1});
}

std::string digestOf(const std::vector<std::uint8_t>& bytes) {
  return Class_Tools::fncConvertByteArrayToHexString(platform::sha256(bytes));
}

}  // namespace hy_wristlog::engineering::facts
