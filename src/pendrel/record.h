#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hy_wristlog/date.h"
#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/series.h"

namespace hy_wristlog {

/// The values of one Pendrel logger. Plain data, which the parsers and the decoder read and write; it knows
/// no port.
struct PendrelRecord {
  static constexpr std::int32_t HeaderBytes = 128, BlockBytes = 4096;  ///< of the memory image
  static constexpr std::int32_t NoLength = -1;                         ///< an unknown BytesUsed
  static constexpr std::int16_t NoOffset = -32768;                     ///< an unknown GMToffset
  static constexpr const char* UnknownZone = "UNK";                    ///< a zone that has no abbreviation
  static constexpr std::int16_t BatteryDays = 180;                     ///< how long a new battery lasts

#define HY_STORED(Name, Type, Access) Type Name{};
#include "hy_wristlog/pendrel_properties.inc"
  std::int16_t ProgressPercent = 0;  ///< of a set-up being sent: 0, 25, 50, 75, 100
  std::string SetupText;             ///< the lines of the set-up answer as they came
  std::string SubjectInfo;           ///< 64 characters, one byte each
  std::int16_t SetupLine3Value = 0;
  std::int16_t MemorySizeKB = 0;
  std::int16_t SubjectInfoVersion = 0;
  std::vector<std::uint8_t> RawData;  ///< the memory image, from address 0

  /// Told from the first character of the serial number and the firmware: Device_Unknown, KR_PENDREL,
  /// KR_PENDREL_CRC or KR_PENDREL_CRC_STEPS.
  enmDeviceType Get_DeviceType() const;
  /// "Pendrel", "Pendrel Steps", or empty.
  std::string Get_DeviceText() const;
  /// Whether its answers carry checksums.
  bool Get_CTcompliant() const;
  std::int32_t Get_MaxBytesUsed() const;
  /// Days.
  std::int16_t Get_MaxBatteryLife() const;
  /// Days that the memory lasts in the present mode and epoch; 0 when they are not set.
  double Get_MaxRecordingTime() const;
  /// Whether the epoch is one of those that a recording is retrieved with: 15, 30 or 60 seconds.
  bool hasUsualEpoch() const { return EpochLength == 15 || EpochLength == 30 || EpochLength == 60; }
  /// How many blocks hold the header and the recorded bytes.
  std::int16_t Get_BlocksToDownload() const;
};

}  // namespace hy_wristlog
