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

/// Reads the three fields of a version text. The characters between and after them do not matter. No value
/// when the text is shorter than 10 characters or a field is not all digits. Whether such firmware exists is
/// not looked at.
std::optional<FirmwareVersion> parseFirmware(std::string_view text);

/// Whether the library knows the firmware: 00.01 from build 23 on, 00.02, 01.00 and 01.01. For other firmware
/// all functions below are false.
bool isValidFirmware(const VardenRecord& record);
/// The config block has a memory-full flag.
bool hasMemoryFullFlag(const VardenRecord& record);
/// The battery is also read under load.
bool hasLoadedVoltage(const VardenRecord& record);
bool hasSleepMode(const VardenRecord& record);
/// Of the firmware 00.01 only build 29 has the new format. Later builds have the old one again.
bool hasNewEventFormat(const VardenRecord& record);
bool hasNewLightScaleFactors(const VardenRecord& record);

/// Takes the answer to "show ver" into FirmwareVersion and LCDfirmwareVersion. The form of the answer depends
/// on the device type. Other device types leave both as they were.
void parseVersionInfo(VardenRecord& record, std::string_view version);

}  // namespace hy_wristlog
