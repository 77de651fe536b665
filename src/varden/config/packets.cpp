#include "varden/config/packets.h"

#include <algorithm>

#include "base/faults.h"

namespace hy_wristlog {

void requirePackets(const PacketArray& packets, const char* source) {
  if (!packets) throw Failure(FailureNumber::OutOfRange, source, "Invalid packet array input");
}

void dropRepeatedPackets(PacketArray& packets) {
  if (!packets) return;
  const auto repeats =
      std::ranges::unique(*packets, [](const Class_Packet& before, const Class_Packet& after) {
        return before.PacketNum == after.PacketNum && before.BinData == after.BinData;
      });
  packets->erase(repeats.begin(), repeats.end());
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
