#include "varden/packets.h"

#include "base/faults.h"

namespace hy_wristlog {

void requirePackets(const PacketArray& packets, const char* source) {
  if (!packets) throw Failure(11503, source, "Invalid packet array input");
}

ByteArray joinPackets(const std::vector<Class_Packet>& packets) {
  constexpr std::size_t MostPacketBytes = 1024;
  ByteArray bytes;
  bytes.reserve(packets.size() * MostPacketBytes);
  for (const Class_Packet& packet : packets) {
    if (bytes.size() + packet.BinData.size() > packets.size() * MostPacketBytes)
      fault::raise(fault::Subscript);
    bytes.insert(bytes.end(), packet.BinData.begin(), packet.BinData.end());
  }
  return bytes;
}

}  // namespace hy_wristlog
