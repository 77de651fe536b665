#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "varden/config/config_block.h"
#include "varden/record.h"

/// The config block of 256 bytes. It begins with a CRC-16/XMODEM over its other bytes. Numbers are
/// little-endian, texts in code page 1252. What is sent to a logger is the part from offset 64 on, followed
/// by zeros up to 256 bytes.
namespace hy_wristlog {

inline constexpr std::size_t ConfigBlockSize = 256;
/// The part before this offset belongs to the logger and is never sent.
inline constexpr std::size_t ConfigSentFrom = 64;

/// Raises DamagedConfig when the stored CRC is not that of the block, or the block is not complete.
void checkConfigCrc(std::span<const std::uint8_t> block);
/// Raises UnknownStructure for a structure version other than 1 and 2.
void checkConfigVersion(std::span<const std::uint8_t> block);
/// Raises Subscript for less than a whole block.
VardenConfigBlock readConfigBlock(std::span<const std::uint8_t> block);

/// Takes the fields into the record's members; EncodedSetup is not taken apart. A block of version 1 leaves
/// FirmwareVersion as it was. A block without a memory-full flag leaves MemoryFull.
void applyConfigBlock(const VardenConfigBlock& block, VardenRecord& record);

/// The 256 bytes to send. Raises UnknownStructure for a structure version other than 1 and 2. Raises
/// OutOfRange for an enumeration without a code, a bias out of range and a date before 1901-12-13, and
/// Overflow for a number that does not fit its field.
ByteArray encodeConfigBlock(const VardenRecord& record);

}  // namespace hy_wristlog
