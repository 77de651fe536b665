#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hy_wristlog {

/// The fields of a config block as the wire carries them: times in logger seconds, enumerations as their
/// codes. Texts are UTF-8 and end before their first NUL.
struct VardenConfigBlock {
  std::uint16_t Crc = 0;
  std::uint8_t Version = 0, MemorySize = 0, FeaturesFlag1 = 0, FeaturesFlag2 = 0;
  std::string SerialNumber;
  std::uint32_t NextMemoryAddress = 0;
  std::uint8_t LowPowerShutdownFlag = 0, Model = 0;
  std::string FirmwareVersion;                 ///< 8 characters without points; empty in a block of version 1
  std::optional<std::uint8_t> MemoryFullFlag;  ///< only blocks of version 2 of newer firmware have one
  std::vector<std::uint8_t> Unused1;
  std::uint8_t BootLoaderFlag = 0;
  std::string SubjectIdentity;
  std::int32_t BatteryDate = 0;
  std::uint16_t LightCalibration = 0;
  std::uint8_t ActivityCalibration = 0, AcquisitionMode = 0;
  std::uint16_t EpochLength = 0;
  std::int32_t StartTime = 0, StopTime = 0;
  std::int16_t TimeZoneBias = 0;
  std::int8_t StandardBias = 0, DaylightBias = 0;
  std::int32_t DstStart = 0, DstEnd = 0;
  std::string StandardAbbreviation, DaylightAbbreviation;
  std::uint8_t DisplayFormats = 0;
  std::uint16_t RedCalibration = 0, GreenCalibration = 0, BlueCalibration = 0;
  std::uint8_t Button1Map = 0, Button2Map = 0, ResetsAndShutdowns = 0, AcqThreshold = 0, DataAvailable = 0;
  std::uint8_t ScoreMin = 0, ScoreMax = 0;
  std::uint16_t OffWristOn = 0, OffWristOff = 0;
  std::array<std::uint8_t, 8> Unused2{};
};

}  // namespace hy_wristlog
