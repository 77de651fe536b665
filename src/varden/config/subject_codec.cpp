#include "varden/config/subject_codec.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "base/ascii.h"
#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"

namespace hy_wristlog {
namespace {

constexpr std::size_t FieldSize = 128, WrittenCharacters = 127, NeededCharacters = 119;
constexpr std::size_t IdentityLength = 64, InitialsLength = 3, GuidLength = 32, TenthsLength = 5,
                      FillerLength = 9;
constexpr std::int16_t WrittenVersion = 2;
constexpr char NoGender = '\\';

std::string padded(const std::string& utf8, std::size_t length) {
  std::string text = ansiTextFromUtf8(utf8);
  text.resize(length, ' ');
  return text;
}

/// The product has single precision, as the logger's own software has it: 70.1 gives 701, not 700.
std::string tenths(float value) {
  const float product = value * 10.0f;
  if (!std::isfinite(product)) fault::raise(fault::Overflow);
  return formatNumber(std::trunc(product), "00000");
}

/// Hands out the fields of a text, one after the other.
class FieldReader {
 public:
  explicit FieldReader(std::string_view text) : rest_(text) {}

  std::string_view take(std::size_t length) {
    const std::string_view field = rest_.substr(0, length);
    rest_.remove_prefix(field.size());
    return field;
  }
  std::string takeText(std::size_t length) { return utf8FromAnsiText(trimBlanks(take(length))); }

  std::optional<double> takeNumber(std::size_t length) { return parseNumber(take(length)); }

 private:
  std::string_view rest_;
};

double takeDate(FieldReader& fields) {
  const auto month = fields.takeNumber(2), day = fields.takeNumber(2), year = fields.takeNumber(4);
  const auto within = [](const std::optional<double>& value, double low, double high) {
    return value && *value >= low && *value <= high;
  };
  if (!within(month, 1, 12) || !within(day, 1, 31) || !within(year, 0, 9999)) return UnknownDate;
  return dateSerial(roundToInt32(*year), roundToInt32(*month), roundToInt32(*day));
}

float takeTenths(FieldReader& fields) {
  const auto number = fields.takeNumber(TenthsLength);
  if (!number || std::abs(*number) > std::numeric_limits<float>::max()) return -1;
  return static_cast<float>(*number / 10);
}

}  // namespace

void encodeSubjectText(VardenRecord& record) {
  const std::string_view gender = trimBlanks(record.SubjectGender);
  std::string text = std::to_string(WrittenVersion);
  text += padded(record.SubjectIdentity, IdentityLength);
  text += padded(record.SubjectInitials, InitialsLength);
  text += padded(record.SubjectGUID, GuidLength);
  text += gender.empty() ? NoGender : ansiTextFromUtf8(gender).front();
  text += formatDate(record.SubjectDOB, "mmddyyyy");
  text += tenths(record.SubjectWeight);
  text += tenths(record.SubjectHeight);
  text.append(FillerLength, '\0');
  record.EncodedSetup = utf8FromAnsiText(text);
  record.SubjectInfoVersion = WrittenVersion;
}

void decodeSubjectText(VardenRecord& record) {
  const std::string text = ansiTextFromUtf8(record.EncodedSetup);
  record.SubjectDOB = UnknownDate;
  record.SubjectWeight = -1;
  record.SubjectHeight = -1;
  if (text.size() < NeededCharacters) {
    record.SubjectInfoVersion = -1;
    record.SubjectIdentity.clear();
    record.SubjectInitials.clear();
    record.SubjectGender.clear();
    record.SubjectGUID.clear();
    return;
  }
  FieldReader fields(text);
  const std::string_view version = fields.take(1);
  if (!isDigits(version)) {
    record.SubjectInfoVersion = 0;
    return;
  }
  record.SubjectInfoVersion = static_cast<std::int16_t>(version.front() - '0');
  record.SubjectIdentity = fields.takeText(IdentityLength);
  if (record.SubjectIdentity.empty()) record.SubjectIdentity = " ";
  record.SubjectInitials = fields.takeText(InitialsLength);
  record.SubjectGUID = fields.takeText(GuidLength);
  record.SubjectGender = fields.takeText(1);
  if (record.SubjectGender == std::string_view(&NoGender, 1)) record.SubjectGender.clear();
  record.SubjectDOB = takeDate(fields);
  record.SubjectWeight = takeTenths(fields);
  record.SubjectHeight = takeTenths(fields);
}

std::vector<std::uint8_t> encodeSubjectBytes(const VardenRecord& record) {
  std::vector<std::uint8_t> bytes = ansiFromUtf8(record.EncodedSetup);
  bytes.resize(std::min(bytes.size(), WrittenCharacters));
  bytes.resize(FieldSize);
  return bytes;
}

std::string decodeSubjectBytes(std::span<const std::uint8_t> bytes) {
  return std::string(cutAtNul(utf8FromAnsi(bytes.subspan(0, std::min(bytes.size(), FieldSize)))));
}

}  // namespace hy_wristlog
