#include "varden/config/packets.h"

#include <algorithm>

#include "base/faults.h"
#include "varden/failures.h"

namespace hy_wristlog {

void requirePackets(const PacketArray& packets, const char* procedure) {
  if (!packets) raiseFrom(procedure, FailureNumber::OutOfRange, "Invalid packet array input");
}

void dropRepeatedPackets(PacketArray& packets) {
  if (!packets) return;
  const auto repeats = std::unique(
      packets->begin(), packets->end(), [](const Class_Packet& before, const Class_Packet& after) {
        return before.PacketNum == after.PacketNum && before.BinData == after.BinData;
      });
  packets->erase(repeats, packets->end());
}

void keepConsecutivePackets(std::vector<Class_Packet>& packets) {
  std::uint8_t expected = 1;
  packets.erase(std::find_if(packets.begin(), packets.end(),
                             [&](const Class_Packet& packet) { return packet.PacketNum != expected++; }),
                packets.end());
}

std::vector<Class_Packet> splitIntoPackets(std::span<const std::uint8_t> bytes) {
  std::vector<Class_Packet> packets;
  while (!bytes.empty()) {
    const auto data = bytes.first(std::min(bytes.size(), Class_Packet::ShortData));
    bytes = bytes.subspan(data.size());
    Class_Packet& packet = packets.emplace_back();
    packet.PacketSize = 1;
    packet.PacketNum = static_cast<std::uint8_t>(packets.size());
    packet.BinData.assign(data.begin(), data.end());
  }
  return packets;
}

ByteArray joinPackets(const std::vector<Class_Packet>& packets) {
  ByteArray bytes;
  bytes.reserve(packets.size() * Class_Packet::LongData);
  for (const Class_Packet& packet : packets) {
    if (bytes.size() + packet.BinData.size() > packets.size() * Class_Packet::LongData)
      fault::raise(fault::Subscript);
    bytes.insert(bytes.end(), packet.BinData.begin(), packet.BinData.end());
  }
  return bytes;
}

}  // namespace hy_wristlog
