#include "pendrel/subject_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/code_page.h"
#include "base/dates.h"
#include "base/numbers.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Base64Class.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

struct Field {
  std::size_t Offset, Length;
};

constexpr Field Identity{0, 23}, Initials{23, 3}, Gender{26, 1}, Daylight{27, 1}, Zone{28, 3}, Packed{31, 32},
    Version{63, 1};
constexpr std::size_t TextLength = 64;

// Places in the packed bytes
constexpr Field Guid{0, 16}, BirthDay{16, 2}, Offset{18, 2}, Height{20, 2}, Weight{22, 2};
constexpr std::size_t PackedLength = 24;

constexpr char WrittenVersion = '2';

void put(std::string& text, Field field, const std::string& utf8) {
  const std::string ansi = ansiTextFromUtf8(utf8);
  text.replace(field.Offset, std::min(field.Length, ansi.size()), ansi, 0, field.Length);
}

std::string_view get(std::string_view text, Field field) { return text.substr(field.Offset, field.Length); }

std::string getTrimmed(std::string_view text, Field field) {
  const std::string_view value = get(text, field);
  return utf8FromAnsiText(value.substr(0, value.find_last_not_of(' ') + 1));
}

void putWord(std::span<std::uint8_t> bytes, Field field, std::int32_t value) {
  bytes[field.Offset] = static_cast<std::uint8_t>(value >> 8);
  bytes[field.Offset + 1] = static_cast<std::uint8_t>(value);
}

std::uint16_t getWord(std::span<const std::uint8_t> bytes, Field field) {
  return static_cast<std::uint16_t>(bytes[field.Offset] << 8 | bytes[field.Offset + 1]);
}

void putGuid(std::span<std::uint8_t> bytes, const std::string& utf8) {
  const std::string digits = ansiTextFromUtf8(utf8);
  for (std::size_t i = 0; i < Guid.Length; ++i) {
    const std::string_view pair = std::string_view(digits).substr(std::min(2 * i, digits.size()), 2);
    std::from_chars(pair.data(), pair.data() + pair.size(), bytes[Guid.Offset + i], 16);
  }
}

/// The high byte comes from a division that cuts towards zero, so that it is 0 for -1.
void putBirthDay(std::span<std::uint8_t> bytes, double date) {
  const std::int32_t days = roundToInt32(std::trunc(date));
  bytes[BirthDay.Offset] = static_cast<std::uint8_t>(days / 256);
  bytes[BirthDay.Offset + 1] = static_cast<std::uint8_t>(days);
}

/// The product has single precision: 70.1 gives 701 and not 700.
void putTenths(std::span<std::uint8_t> bytes, Field field, float value) {
  const float product = value * 10.0F;
  putWord(bytes, field, roundToInt32(std::floor(product)));
}

float getTenths(std::span<const std::uint8_t> bytes, Field field) {
  return static_cast<float>(getWord(bytes, field) / 10.0);
}

std::vector<std::uint8_t> packedBytes(const PendrelRecord& record) {
  std::vector<std::uint8_t> bytes(PackedLength);
  putGuid(bytes, record.SubjectGUID);
  putBirthDay(bytes, record.SubjectDOB);
  putWord(bytes, Offset, record.GMToffset);
  putTenths(bytes, Height, record.SubjectHeight);
  putTenths(bytes, Weight, record.SubjectWeight);
  return bytes;
}

void takePackedBytes(PendrelRecord& record, std::span<const std::uint8_t> bytes) {
  record.SubjectGUID = Class_Tools::fncConvertByteArrayToHexString(bytes.subspan(Guid.Offset, Guid.Length));
  record.SubjectDOB = getWord(bytes, BirthDay);
  record.GMToffset = static_cast<std::int16_t>(getWord(bytes, Offset));
  record.SubjectHeight = getTenths(bytes, Height);
  record.SubjectWeight = getTenths(bytes, Weight);
}

void forgetPackedFields(PendrelRecord& record) {
  record.SubjectGUID.clear();
  record.SubjectDOB = UnknownDate;
  record.GMToffset = PendrelRecord::NoOffset;
  record.SubjectHeight = -1;
  record.SubjectWeight = -1;
  record.SubjectInfoVersion = -1;
}

}  // namespace

void encodeSubjectText(PendrelRecord& record) {
  const std::string packed = Class_Base64Class::fncEncodeByteArray(packedBytes(record));
  if (packed.empty()) {
    record.SubjectInfo.clear();
    return;
  }
  std::string text(TextLength, ' ');
  put(text, Identity, record.SubjectIdentity);
  put(text, Initials, record.SubjectInitials);
  put(text, Gender, record.SubjectGender);
  text[Daylight.Offset] = record.AutoDSTadjust ? 'T' : 'F';
  put(text, Zone, record.TimeZoneAbbrev);
  put(text, Packed, packed);
  text[Version.Offset] = WrittenVersion;
  record.SubjectInfo = text;
  record.SubjectInfoVersion = 2;
}

void decodeSubjectText(PendrelRecord& record) {
  const std::string_view text = record.SubjectInfo;
  record.SubjectIdentity.clear();
  record.SubjectInitials.clear();
  record.SubjectGender.clear();
  record.TimeZoneAbbrev.clear();
  forgetPackedFields(record);
  if (text.size() != TextLength) return;

  record.SubjectIdentity = getTrimmed(text, Identity);
  if (record.SubjectIdentity.empty()) record.SubjectIdentity = " ";
  record.SubjectInitials = getTrimmed(text, Initials);
  const char daylight = text[Daylight.Offset];
  if (daylight != 'T' && daylight != 'F') return;
  record.SubjectGender = utf8FromAnsiText(get(text, Gender));
  record.AutoDSTadjust = daylight == 'T';

  const std::string zone = utf8FromAnsiText(get(text, Zone));
  if (zone != PendrelRecord::UnknownZone && Class_TimeZoneTools::fncGetKeyFromAbbrev(zone).empty()) return;
  record.TimeZoneAbbrev = zone;

  const auto bytes = Class_Base64Class::fncDecodeToByteArray(get(text, Packed));
  if (bytes.size() != PackedLength) return;
  takePackedBytes(record, bytes);
  if (text[Version.Offset] == WrittenVersion) record.SubjectInfoVersion = 2;
}

}  // namespace hy_wristlog
