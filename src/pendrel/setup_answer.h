#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "pendrel/record.h"

/// The text with which a logger reports its set-up: eight lines, one byte a character, without their ends.
///   0  not used
///   1  subject text
///   2  epoch code, in the first two characters
///   3  a byte, in the last two
///   4  memory pointer, in the last four
///   5  start, "dd mm yy HH MM"
///   6  battery date, "dd mm yy"
///   7  device record "Fvv.cc.ssss.mm.rr": family letter, firmware, calibration, serial digits, memory size
///      code, resets; any character may stand in place of the points
/// Codes and numbers are hexadecimal, dates decimal. A field that cannot be read gets its unknown value.
namespace hy_wristlog {

using SetupLines = std::array<std::string, 8>;

/// Takes SerialNumber, FirmwareVersion (0 unknown) and MemorySizeKB (-1 unknown) from line 7; the first two
/// tell the device type. From a line that is too short it takes what there is.
void takeDeviceRecord(PendrelRecord& record, std::string_view line7);

/// Takes everything else, after the device record: the subject, which is decoded, EpochLength,
/// SetupLine3Value, BytesUsed (at most Get_MaxBytesUsed), StartDate and StartTime, BatteryDate,
/// ActivityCalibration (0 unknown) and Resets (-1 unknown). A day that its month does not have is carried
/// into the next month.
void takeSetup(PendrelRecord& record, const SetupLines& lines);

/// Takes AcquisitionMode from the byte in which the steps model keeps it; the others record activity alone.
void takeMode(PendrelRecord& record, std::uint8_t kept);
/// What SetupText tells of that byte, after the lines of the answer.
std::string modeText(std::uint8_t kept);

/// Takes all of the above from SetupText, the answer as a retrieval has kept it: lines 1 to 7 and, where the
/// type has them, checksum and mode. False when the text ends before.
bool takeSetupText(PendrelRecord& record);

/// Takes the abbreviation of the catalogue's first zone that had the logger's offset at its start. False when
/// there is none. Raises NoZones when the system has no zones.
bool takeZoneOfOffset(PendrelRecord& record);

/// Whether the year of `date` survives as the two digits that a logger keeps: 1930 to 2029.
bool hasTwoDigitYear(double date);

}  // namespace hy_wristlog
