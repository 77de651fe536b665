#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "varden/config/config_block.h"
#include "varden/record.h"

/// The config block of 256 bytes: a CRC-16/XMODEM over the rest in front, numbers little-endian, texts in
/// code page 1252. What is sent is the block from offset 64 on, shifted to 0, and zeros behind it.
namespace hy_wristlog {

inline constexpr std::size_t ConfigBlockSize = 256;
/// The part in front is the logger's own.
inline constexpr std::size_t ConfigSentFrom = 64;

/// Raises DamagedConfig when the stored CRC is not that of the block, or the block is not complete.
void checkConfigCrc(std::span<const std::uint8_t> block);
/// Raises UnknownStructure for a structure version other than 1 and 2.
void checkConfigVersion(std::span<const std::uint8_t> block);
/// Raises 9 for less than a whole block.
VardenConfigBlock readConfigBlock(std::span<const std::uint8_t> block);

/// Takes the fields into the record's members; EncodedSetup is not taken apart. A block of version 1 leaves
/// FirmwareVersion, one without a memory-full flag MemoryFull as it was. Raises 6 for an epoch above 32767
/// seconds.
void applyConfigBlock(const VardenConfigBlock& block, VardenRecord& record);

/// The 256 bytes to send. Raises UnknownStructure for a structure version other than 1 and 2; OutOfRange for
/// an enumeration without a code, a bias out of range or a date before 1901-12-13; 6 for a number that does
/// not fit its field.
ByteArray encodeConfigBlock(const VardenRecord& record);

}  // namespace hy_wristlog
