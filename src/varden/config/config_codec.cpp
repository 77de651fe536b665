#include "varden/config/config_codec.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/ascii.h"
#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "tools/Class_Tools.h"
#include "varden/config/wire_codes.h"
#include "varden/failures.h"
#include "varden/firmware.h"
#include "varden/varden_seconds.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::size_t VersionOffset = 2;

// What stands at offsets 28 to 62 depends on version and firmware.
constexpr std::size_t VariableFrom = 28, FirmwareLength = 8, VariableTo = 63;

/// The layout, for reading and writing: calls `visit(offset, size, field)` for every field that stands at the
/// same place in all blocks.
template <class Block, class Visit>
void visitFields(Block& block, const Visit& visit) {
  visit(0, 2, block.Crc);
  visit(VersionOffset, 1, block.Version);
  visit(3, 1, block.MemorySize);
  visit(4, 1, block.FeaturesFlag1);
  visit(5, 1, block.FeaturesFlag2);
  visit(6, 16, block.SerialNumber);
  visit(22, 4, block.NextMemoryAddress);
  visit(26, 1, block.LowPowerShutdownFlag);
  visit(27, 1, block.Model);
  visit(VariableTo, 1, block.BootLoaderFlag);
  visit(ConfigSentFrom, 128, block.SubjectIdentity);
  visit(192, 4, block.BatteryDate);
  visit(196, 2, block.LightCalibration);
  visit(198, 1, block.ActivityCalibration);
  visit(199, 1, block.AcquisitionMode);
  visit(200, 2, block.EpochLength);
  visit(202, 4, block.StartTime);
  visit(206, 4, block.StopTime);
  visit(210, 2, block.TimeZoneBias);
  visit(212, 1, block.StandardBias);
  visit(213, 1, block.DaylightBias);
  visit(214, 4, block.DstStart);
  visit(218, 4, block.DstEnd);
  visit(222, 4, block.StandardAbbreviation);
  visit(226, 4, block.DaylightAbbreviation);
  visit(230, 1, block.DisplayFormats);
  visit(231, 2, block.RedCalibration);
  visit(233, 2, block.GreenCalibration);
  visit(235, 2, block.BlueCalibration);
  visit(237, 1, block.Button1Map);
  visit(238, 1, block.Button2Map);
  visit(239, 1, block.ResetsAndShutdowns);
  visit(240, 1, block.AcqThreshold);
  visit(241, 1, block.DataAvailable);
  visit(242, 1, block.ScoreMin);
  visit(243, 1, block.ScoreMax);
  visit(244, 2, block.OffWristOn);
  visit(246, 2, block.OffWristOff);
  visit(248, 8, block.Unused2);
}

std::string readText(std::span<const std::uint8_t> bytes) {
  return std::string(cutAtNul(utf8FromAnsi(bytes)));
}

struct FieldReader {
  std::span<const std::uint8_t> Block;

  void operator()(std::size_t offset, std::size_t size, std::string& field) const {
    field = readText(Block.subspan(offset, size));
  }
  void operator()(std::size_t offset, std::size_t, std::array<std::uint8_t, 8>& field) const {
    std::copy_n(Block.begin() + static_cast<std::ptrdiff_t>(offset), field.size(), field.begin());
  }
  template <class Number>
  requires std::is_integral_v<Number>
  void operator()(std::size_t offset, std::size_t size, Number& field) const {
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) value = value << 8 | Block[offset + i];
    field = static_cast<Number>(value);
  }
};

/// Writes the fields that are sent and passes over the others. The last byte of a text stays 0.
struct FieldWriter {
  std::span<std::uint8_t> Sent;

  void operator()(std::size_t offset, std::size_t size, const std::string& field) const {
    if (offset < ConfigSentFrom) return;
    const auto bytes = ansiFromUtf8(field);
    const auto length = std::min(bytes.size(), size - 1);
    std::copy_n(bytes.begin(), length, Sent.begin() + static_cast<std::ptrdiff_t>(offset - ConfigSentFrom));
  }
  void operator()(std::size_t offset, std::size_t, const std::array<std::uint8_t, 8>& field) const {
    std::copy(field.begin(), field.end(),
              Sent.begin() + static_cast<std::ptrdiff_t>(offset - ConfigSentFrom));
  }
  template <class Number>
  requires std::is_integral_v<Number>
  void operator()(std::size_t offset, std::size_t size, Number field) const {
    if (offset < ConfigSentFrom) return;
    auto value = static_cast<std::uint32_t>(field);
    for (std::size_t i = 0; i < size; ++i, value >>= 8)
      Sent[offset - ConfigSentFrom + i] = static_cast<std::uint8_t>(value);
  }
};

/// "00020002" becomes "00.02.0002". A shorter text gives a shorter one, which no firmware test accepts.
std::string dottedFirmware(const std::string& stored) {
  const std::string ansi = ansiTextFromUtf8(stored);
  const auto piece = [&](std::size_t from, std::size_t length) {
    return ansi.substr(std::min(from, ansi.size()), length);
  };
  return utf8FromAnsiText(piece(0, 2) + "." + piece(2, 2) + "." + piece(4, 4));
}

void readVariablePart(std::span<const std::uint8_t> bytes, VardenConfigBlock& block) {
  std::size_t offset = VariableFrom;
  if (block.Version == 2) {
    block.FirmwareVersion = readText(bytes.subspan(offset, FirmwareLength));
    offset += FirmwareLength;
    VardenRecord firmware;
    firmware.FirmwareVersion = dottedFirmware(block.FirmwareVersion);
    if (hasMemoryFullFlag(firmware)) block.MemoryFullFlag = bytes[offset++];
  }
  const auto unused = bytes.subspan(offset, VariableTo - offset);
  block.Unused1.assign(unused.begin(), unused.end());
}

double dateOrNone(std::int32_t seconds) { return seconds == 0 ? 0 : dateFromUnixSeconds(seconds); }
std::int32_t secondsOrNone(double date) { return date == 0 ? 0 : dateToLoggerSeconds(date); }

constexpr const char* Decoding = "subDecodeVardenLoggerConfig";
constexpr const char* Encoding = "fncEncodeVardenLoggerConfig";

/// The code of a row. Raises OutOfRange when it has none.
template <class Row>
std::uint8_t wireOrRaise(Row row, const char* description) {
  if (const auto wire = wireOfRow(row)) return *wire;
  raiseFrom(Encoding, OutOfRange, description);
}

/// The number as 16 bits. Raises Overflow when its high byte does not fit.
std::uint16_t unsigned16(std::int32_t value) {
  return static_cast<std::uint16_t>(fault::narrow<std::uint8_t>(value / 256) << 8 | (value & 255));
}

template <class Field>
Field biasOrRaise(std::int32_t minutes, const char* description) {
  if (minutes < std::numeric_limits<Field>::min() || minutes > std::numeric_limits<Field>::max())
    raiseFrom(Encoding, OutOfRange, description);
  return static_cast<Field>(minutes);
}

/// The fields that are sent. They are checked in the order in which they stand in the block.
VardenConfigBlock sentFields(const VardenRecord& record) {
  VardenConfigBlock block;
  block.SubjectIdentity = record.EncodedSetup;
  block.BatteryDate = dateToLoggerSeconds(record.BatteryDate);
  block.LightCalibration = unsigned16(record.LightScaleCalibration);
  block.ActivityCalibration = record.ActivityCalibration;
  block.AcquisitionMode = wireOrRaise(record.AcquisitionMode, "Invalid Logging Mode");
  block.EpochLength = static_cast<std::uint16_t>(record.EpochLength & 0x7FFF);
  block.StartTime = dateToLoggerSeconds(record.StartTimeGMT);
  block.StopTime = dateToLoggerSeconds(record.EndTimeGMT);
  block.TimeZoneBias = biasOrRaise<std::int16_t>(record.TZbias, "Out of Bounds Offset Value");
  block.StandardBias = biasOrRaise<std::int8_t>(record.TZstandardBias, "Out of Bounds Standard Offset Value");
  block.DaylightBias = biasOrRaise<std::int8_t>(record.TZdaylightBias, "Out of Bounds Standard Offset Value");
  block.DstStart = secondsOrNone(record.TZdstStart);
  block.DstEnd = secondsOrNone(record.TZdstEnd);
  block.StandardAbbreviation = record.TZstandardAbbrev;
  block.DaylightAbbreviation = record.TZdaylightAbbrev;
  const auto timeCode = wireOrRaise(record.TimeFormat, "Invalid Time Format");
  const auto dateCode = wireOrRaise(record.DateFormat, "Invalid Date Format");
  block.DisplayFormats = static_cast<std::uint8_t>(timeCode | dateCode << 4);
  block.RedCalibration = unsigned16(record.RedLightCalibration);
  block.GreenCalibration = unsigned16(record.GreenLightCalibration);
  block.BlueCalibration = unsigned16(record.BlueLightCalibration);
  block.Button1Map = wireOrRaise(record.Button1Map, "Invalid Button 1 Map");
  block.Button2Map = wireOrRaise(record.Button2Map, "Invalid Button 1 Map");
  block.ResetsAndShutdowns =
      static_cast<std::uint8_t>((record.Resets & 15) | (record.LowPowerShutdowns & 15) << 4);
  block.AcqThreshold = record.AcqThreshold;
  block.DataAvailable = wireOrRaise(record.DataAvailable, "Invalid Data Available Flag");
  block.ScoreMin = record.ScoreMin;
  block.ScoreMax = record.ScoreMax;
  block.OffWristOn = unsigned16(record.OffWristOnThreshold);
  block.OffWristOff = unsigned16(record.OffWristOffThreshold);
  if (record.Unused2)
    std::copy_n(record.Unused2->begin(), std::min(record.Unused2->size(), block.Unused2.size()),
                block.Unused2.begin());
  return block;
}

}  // namespace

void checkConfigCrc(std::span<const std::uint8_t> block) {
  if (block.size() >= ConfigBlockSize &&
      Class_Tools::fncGetCRC16(block.subspan(VersionOffset, ConfigBlockSize - VersionOffset)) ==
          (block[0] | block[1] << 8))
    return;
  raiseFrom(Decoding, DamagedConfig, "Logger configuration CRC verification failed");
}

void checkConfigVersion(std::span<const std::uint8_t> block) {
  const std::uint8_t version = fault::at(block, VersionOffset);
  if (version != 1 && version != 2)
    raiseFrom(Decoding, UnknownStructure,
              "This logger data version (" + std::to_string(version) + ") is not supported.");
}

VardenConfigBlock readConfigBlock(std::span<const std::uint8_t> block) {
  if (block.size() < ConfigBlockSize) fault::raise(fault::Subscript);
  VardenConfigBlock fields;
  visitFields(fields, FieldReader{block});
  readVariablePart(block, fields);
  return fields;
}

void applyConfigBlock(const VardenConfigBlock& block, VardenRecord& record) {
  record.ConfigCRC = block.Crc;
  record.StructureVersion = block.Version;
  record.MemorySize = static_cast<std::int16_t>(block.MemorySize * 64);
  record.FeaturesFlag1 = block.FeaturesFlag1;
  record.FeaturesFlag2 = block.FeaturesFlag2;
  record.SerialNumber = block.SerialNumber;
  record.BytesUsed = static_cast<std::int32_t>(block.NextMemoryAddress);
  record.LowPowerShutdownFlag = rowOfWire<enmLowPowerShutdown>(block.LowPowerShutdownFlag);
  record.Model = block.Model;
  record.DeviceType = block.Model == 1 ? KR_TOLKA : block.Model == 2 ? KR_QUILLANDER : Device_Unknown;
  if (block.Version == 2) record.FirmwareVersion = dottedFirmware(block.FirmwareVersion);
  if (block.MemoryFullFlag) record.MemoryFull = rowOfWire<enmMemoryFull>(*block.MemoryFullFlag);
  record.Unused1 = block.Unused1;
  record.BootLoaderFlag = block.BootLoaderFlag;
  record.EncodedSetup = block.SubjectIdentity;
  record.BatteryDate = dateFromUnixSeconds(block.BatteryDate);
  record.LightScaleCalibration = block.LightCalibration;
  record.ActivityCalibration = block.ActivityCalibration;
  record.AcquisitionMode = rowOfWire<enmVardenLoggingMode>(block.AcquisitionMode);
  // A damaged length must not lock the logger out. It becomes a negative one, which no workflow accepts.
  record.EpochLength = static_cast<std::int16_t>(block.EpochLength);
  record.StartTimeGMT = dateFromUnixSeconds(block.StartTime);
  record.EndTimeGMT = dateFromUnixSeconds(block.StopTime);
  record.TZbias = block.TimeZoneBias;
  record.TZstandardBias = block.StandardBias;
  record.TZdaylightBias = block.DaylightBias;
  record.TZdstStart = dateOrNone(block.DstStart);
  record.TZdstEnd = dateOrNone(block.DstEnd);
  record.AutoDSTadjust = block.DstStart != 0 || block.DstEnd != 0;
  record.TZstandardAbbrev = block.StandardAbbreviation;
  record.TZdaylightAbbrev = block.DaylightAbbreviation;
  record.TimeFormat = rowOfWire<enmTimeFormat>(block.DisplayFormats & 15);
  record.DateFormat = rowOfWire<enmDateFormat>(block.DisplayFormats >> 4);
  record.RedLightCalibration = block.RedCalibration;
  record.GreenLightCalibration = block.GreenCalibration;
  record.BlueLightCalibration = block.BlueCalibration;
  record.Button1Map = rowOfWire<enmButtonMap>(block.Button1Map);
  record.Button2Map = rowOfWire<enmButtonMap>(block.Button2Map);
  record.Resets = block.ResetsAndShutdowns & 15;
  record.LowPowerShutdowns = block.ResetsAndShutdowns >> 4;
  record.AcqThreshold = block.AcqThreshold;
  record.DataAvailable = rowOfWire<enmDataAvailable>(block.DataAvailable);
  record.ScoreMin = block.ScoreMin;
  record.ScoreMax = block.ScoreMax;
  record.OffWristOnThreshold = block.OffWristOn;
  record.OffWristOffThreshold = block.OffWristOff;
  record.Unused2 = ByteArray(block.Unused2.begin(), block.Unused2.end());
}

ByteArray encodeConfigBlock(const VardenRecord& record) {
  if (record.StructureVersion != 1 && record.StructureVersion != 2)
    raiseFrom(Encoding, UnknownStructure, "This version of logger configuration structure not supported");
  const VardenConfigBlock block = sentFields(record);
  ByteArray sent(ConfigBlockSize);
  visitFields(block, FieldWriter{sent});
  return sent;
}

}  // namespace hy_wristlog
