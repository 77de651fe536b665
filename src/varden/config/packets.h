#pragma once

#include "link/Class_Packet.h"
#include "varden/record.h"

namespace hy_wristlog {

/// Raises OutOfRange "Invalid packet array input" from this procedure of Class_VardenLogger when there is no
/// array.
void requirePackets(const PacketArray& packets, const char* procedure);

/// Leaves out each packet that is the same as the one before it: a sender that missed the acknowledgement has
/// sent it again. Both number and bytes must be the same. The number alone would lose packets of a logger
/// that counts wrongly, the bytes alone would lose parts of a recording that stays the same.
void dropRepeatedPackets(PacketArray& packets);

/// Leaves out all packets from the first whose number is not the next one, counted from 1: before it one is
/// missing.
void keepConsecutivePackets(std::vector<Class_Packet>& packets);

/// The bytes in packets of 128 (the last one may be shorter), numbered from 1.
std::vector<Class_Packet> splitIntoPackets(std::span<const std::uint8_t> bytes);

/// The data bytes of all packets in their order. Raises Subscript for more than 1024 a packet.
ByteArray joinPackets(const std::vector<Class_Packet>& packets);

}  // namespace hy_wristlog
