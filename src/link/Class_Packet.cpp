#include "link/Class_Packet.h"

#include <algorithm>
#include <array>

#include "base/faults.h"
#include "errors/Procedure.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

// The frame: lead byte, packet number, 255 - packet number, data, CRC high byte, CRC low byte.
constexpr std::size_t NumberOffset = 1, ComplementOffset = 2, DataOffset = 3, CrcLength = 2;

struct FrameFormat {
  std::uint8_t LeadByte;
  std::int32_t PacketSize;
  std::size_t DataLength;
  constexpr std::size_t crcOffset() const { return DataOffset + DataLength; }
  constexpr std::size_t length() const { return crcOffset() + CrcLength; }
};

constexpr FrameFormat Formats[] = {{1, 1, Class_Packet::ShortData}, {2, 2, Class_Packet::LongData}};

template <class Matches>
const FrameFormat* findFormat(Matches matches) {
  const auto found = std::find_if(std::begin(Formats), std::end(Formats), matches);
  return found == std::end(Formats) ? nullptr : found;
}

std::uint8_t complement(std::uint8_t number) { return static_cast<std::uint8_t>(255 - number); }

void appendHex(std::string& text, std::uint8_t byte) {
  constexpr std::string_view Digits = "0123456789ABCDEF";
  text += Digits[byte >> 4U];
  text += Digits[byte & 15U];
}

}  // namespace

void Class_Packet::Let_Packet(std::span<const std::uint8_t> frame) {
  Procedure procedure{"Class_Packet", "Let_Packet"};
  procedure.run([&] {
    if (frame.data() == nullptr)
      throw Failure(WrongPacket, "Class_Packet.Set_Packet", "Input data are invalid");
    valid_ = false;
    if (frame.empty()) return;
    const FrameFormat* format = findFormat([&](const FrameFormat& f) { return f.LeadByte == frame.front(); });
    if (format == nullptr || frame.size() != format->length()) return;
    PacketSize = format->PacketSize;
    if (frame[ComplementOffset] != complement(frame[NumberOffset])) return;
    PacketNum = frame[NumberOffset];
    const auto data = frame.subspan(DataOffset, format->DataLength);
    const std::int32_t crc = Tools().fncGetCRC16(data);
    if (frame[format->crcOffset()] * 256 + frame[format->crcOffset() + 1] != crc) return;
    valid_ = true;
    CRC = crc;
    BinData.assign(data.begin(), data.end());
  });
}

std::vector<std::uint8_t> Class_Packet::Get_Packet() {
  constexpr const char* Source = "Class_Packet.Get_Packet";
  Procedure procedure{"Class_Packet", "Get_Packet"};
  return procedure.run([&] {
    if (BinData.empty()) throw Failure(WrongPacket, Source, "No packet data have been set");
    if (PacketSize == 0) throw Failure(WrongPacket, Source, "Invalid Packet Size");
    const FrameFormat* format = findFormat([&](const FrameFormat& f) { return f.PacketSize == PacketSize; });
    if (format == nullptr) throw Failure(WrongPacket, Source, "Invalid packet type");
    std::vector<std::uint8_t> frame(format->length());
    if (BinData.size() > frame.size() - DataOffset) fault::raise(fault::Subscript);
    frame[0] = format->LeadByte;
    frame[NumberOffset] = PacketNum;
    frame[ComplementOffset] = complement(PacketNum);
    std::copy(BinData.begin(), BinData.end(), frame.begin() + DataOffset);
    const std::int32_t crc = Tools().fncGetCRC16(BinData);
    frame[format->crcOffset()] = static_cast<std::uint8_t>(crc / 256);
    frame[format->crcOffset() + 1] = static_cast<std::uint8_t>(crc % 256);
    CRC = crc;
    return frame;
  });
}

std::string Class_Packet::Get_FriendlyPacketText() {
  constexpr std::size_t LongestText = 5500, BytesInRow = 16;
  Procedure procedure{"Class_Packet", "Get_FriendlyPacketText"};
  return procedure.run([&] {
    const std::vector<std::uint8_t> frame = Get_Packet();
    const std::size_t crcOffset = frame.size() - CrcLength;
    std::string text;
    text.reserve(LongestText);
    text += "\r\n<Packet>\r\n  ";
    appendHex(text, frame[0]);
    text += ' ';
    appendHex(text, frame[NumberOffset]);
    text += ' ';
    appendHex(text, frame[ComplementOffset]);
    for (std::size_t i = DataOffset; i < crcOffset; ++i) {
      text += (i - DataOffset) % BytesInRow == 0 ? "\r\n    " : " ";
      appendHex(text, frame[i]);
    }
    text += "\r\n  ";
    appendHex(text, frame[crcOffset]);
    text += ' ';
    appendHex(text, frame[crcOffset + 1]);
    text += "\r\n</Packet>\r\n";
    return text;
  });
}

}  // namespace hy_wristlog
