#include "simulator/config_block.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "simulator/checksum.h"

namespace hy_wristlog::simulator {
namespace {

std::string padded(std::string_view text, std::size_t width) {
  std::string field{text.substr(0, width)};
  field.resize(width, ' ');
  return field;
}

std::string trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string{text.substr(first, text.find_last_not_of(' ') - first + 1)};
}

std::int32_t digits(std::string_view text) {
  std::int32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

std::string zeroPadded(std::int64_t value, int width) {
  char text[32];
  std::snprintf(text, sizeof text, "%0*lld", width, static_cast<long long>(value));
  return text;
}

}  // namespace

std::uint32_t ConfigBlock::number(BlockField field) const {
  std::uint32_t value = 0;
  for (std::size_t i = field.Size; i-- > 0;) value = (value << 8) | bytes_[field.Offset + i];
  return value;
}

std::int32_t ConfigBlock::signedNumber(BlockField field) const {
  const unsigned unused = 32U - 8U * static_cast<unsigned>(field.Size);
  return static_cast<std::int32_t>(number(field) << unused) >> unused;
}

std::string ConfigBlock::text(BlockField field) const {
  const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(field.Offset);
  const auto end = begin + static_cast<std::ptrdiff_t>(field.Size);
  return {begin, std::find(begin, end, std::uint8_t{0})};
}

void ConfigBlock::set(BlockField field, std::int64_t value) {
  for (std::size_t i = 0; i < field.Size; ++i)
    bytes_[field.Offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
  damaged_ = false;
}

void ConfigBlock::setText(BlockField field, std::string_view text) {
  for (std::size_t i = 0; i < field.Size; ++i)
    bytes_[field.Offset + i] = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
  damaged_ = false;
}

void ConfigBlock::write(std::span<const std::uint8_t> bytes) {
  std::copy_n(bytes.begin(), std::min(bytes.size(), Size - WritableFrom), bytes_.begin() + WritableFrom);
  damaged_ = false;
}

void ConfigBlock::persist(SavedState& state) {
  std::vector<std::uint8_t> bytes(bytes_.begin(), bytes_.end());
  state.bytes("config", bytes, 0);
  std::copy(bytes.begin(), bytes.end(), bytes_.begin());
  state.flag("config.damaged", damaged_);
}

std::array<std::uint8_t, ConfigBlock::Size> ConfigBlock::image() const {
  auto image = bytes_;
  std::uint16_t crc = checksum(std::span{image}.subspan(2));
  if (damaged_) crc ^= 0x5AA5;
  image[0] = static_cast<std::uint8_t>(crc & 0xFF);
  image[1] = static_cast<std::uint8_t>(crc >> 8);
  return image;
}

std::string encodeSubject(const SubjectDetails& subject) {
  std::string text =
      "2" + padded(subject.Identity, 64) + padded(subject.Initials, 3) + padded(subject.Guid, 32);
  text += subject.Gender;
  text +=
      zeroPadded(subject.BirthMonth, 2) + zeroPadded(subject.BirthDay, 2) + zeroPadded(subject.BirthYear, 4);
  text += zeroPadded(subject.WeightTenths, 5) + zeroPadded(subject.HeightTenths, 5);
  text.resize(128, '\0');
  return text;
}

SubjectDetails decodeSubject(std::string_view text) {
  SubjectDetails subject;
  if (text.size() < 119 || text[0] != '2') return subject;
  subject.Identity = trimmed(text.substr(1, 64));
  subject.Initials = trimmed(text.substr(65, 3));
  subject.Guid = trimmed(text.substr(68, 32));
  subject.Gender = text[100];
  subject.BirthMonth = static_cast<unsigned>(digits(text.substr(101, 2)));
  subject.BirthDay = static_cast<unsigned>(digits(text.substr(103, 2)));
  subject.BirthYear = digits(text.substr(105, 4));
  subject.WeightTenths = digits(text.substr(109, 5));
  subject.HeightTenths = digits(text.substr(114, 5));
  return subject;
}

void store(const RecordingSetup& setup, ConfigBlock& into) {
  into.set(block::Mode, static_cast<std::uint8_t>(setup.RecordingMode));
  into.set(block::EpochLength, setup.EpochLength);
  into.set(block::StartTime, setup.StartTime);
  into.set(block::StopTime, setup.StopTime);
  into.set(block::ZoneBias, setup.ZoneBias);
  into.set(block::ZoneStandardBias, setup.ZoneStandardBias);
  into.set(block::ZoneDaylightBias, setup.ZoneDaylightBias);
  into.set(block::DaylightStart, setup.DaylightStart);
  into.set(block::DaylightEnd, setup.DaylightEnd);
  into.setText(block::ZoneStandardName, std::string_view{setup.ZoneName}.substr(0, 3));
  into.set(block::DisplayFormats, setup.TimeFormat | setup.DateFormat << 4);
  into.set(block::Button1, setup.Button1);
  into.set(block::Button2, setup.Button2);
  into.set(block::Threshold, setup.Threshold);
  into.set(block::Counters, 0);
  into.set(block::DataAvailable, FlagNo);
  into.setText(block::Subject, encodeSubject(setup.Subject));
}

RecordingSetup readSetup(const ConfigBlock& from) {
  RecordingSetup setup;
  setup.RecordingMode = static_cast<Mode>(from.number(block::Mode));
  setup.EpochLength = static_cast<std::int32_t>(from.number(block::EpochLength));
  setup.StartTime = from.signedNumber(block::StartTime);
  setup.StopTime = from.signedNumber(block::StopTime);
  setup.ZoneBias = from.signedNumber(block::ZoneBias);
  setup.ZoneStandardBias = from.signedNumber(block::ZoneStandardBias);
  setup.ZoneDaylightBias = from.signedNumber(block::ZoneDaylightBias);
  setup.DaylightStart = from.signedNumber(block::DaylightStart);
  setup.DaylightEnd = from.signedNumber(block::DaylightEnd);
  setup.ZoneName = from.text(block::ZoneStandardName);
  setup.TimeFormat = from.number(block::DisplayFormats) & 15U;
  setup.DateFormat = static_cast<std::uint8_t>(from.number(block::DisplayFormats) >> 4);
  setup.Button1 = static_cast<std::uint8_t>(from.number(block::Button1));
  setup.Button2 = static_cast<std::uint8_t>(from.number(block::Button2));
  setup.Threshold = static_cast<std::uint8_t>(from.number(block::Threshold));
  setup.Subject = decodeSubject(from.text(block::Subject));
  return setup;
}

}  // namespace hy_wristlog::simulator
