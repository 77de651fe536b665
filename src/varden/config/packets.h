#pragma once

#include "link/Class_Packet.h"
#include "varden/record.h"

namespace hy_wristlog {

/// Raises OutOfRange "Invalid packet array input", of the procedure `source`, when there is no array.
void requirePackets(const PacketArray& packets, const char* source);

/// Leaves out each packet that is, in number and bytes, the one before it: a sender that did not hear the
/// acknowledgement has sent it again. Its number alone would lose packets of a logger that counts wrongly,
/// its bytes alone those of a recording that stays the same.
void dropRepeatedPackets(PacketArray& packets);

/// The data bytes of all packets, one behind the other. Raises 9 for more than 1024 a packet.
ByteArray joinPackets(const std::vector<Class_Packet>& packets);

}  // namespace hy_wristlog
