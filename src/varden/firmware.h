#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "varden/record.h"

namespace hy_wristlog {

/// A firmware version, written "00.01.0029".
struct FirmwareVersion {
  std::uint8_t Major = 0, Minor = 0;
  std::int32_t Build = 0;
};

/// The three fields of a version text; what stands between and behind them does not matter. No value when the
/// text is shorter than 10 characters or a field is not all digits. Says nothing about whether such a
/// firmware exists.
std::optional<FirmwareVersion> parseFirmware(std::string_view text);

/// Firmware that the library knows: 00.01 from build 23 on, 00.02, 01.00 and 01.01. All capability tests are
/// false for other firmware.
bool isValidFirmware(const VardenRecord& record);
/// The config block has a memory-full flag.
bool hasMemoryFullFlag(const VardenRecord& record);
/// The battery is also read under load.
bool hasLoadedVoltage(const VardenRecord& record);
bool hasSleepMode(const VardenRecord& record);
/// Of the 00.01 firmware build 29 alone has it; later builds fell back to the old format.
bool hasNewEventFormat(const VardenRecord& record);
bool hasNewLightScaleFactors(const VardenRecord& record);

/// Takes the answer to "show ver" into FirmwareVersion and LCDfirmwareVersion, as the device type tells.
/// Other device types leave both as they were.
void parseVersionInfo(VardenRecord& record, std::string_view version);

}  // namespace hy_wristlog
