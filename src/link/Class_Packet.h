#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace hy_wristlog {

/// One XMODEM-CRC packet (Chuck Forsberg, "XMODEM/YMODEM Protocol Reference"): 128 or 1024 data bytes between
/// a header of three bytes and a CRC-16, high byte first.
class Class_Packet {
 public:
  static constexpr std::size_t ShortData = 128, LongData = 1024;

  std::int32_t PacketSize = 0;        ///< 1 for 128 data bytes, 2 for 1024, 0 not set
  std::vector<std::uint8_t> BinData;  ///< the data bytes
  std::int32_t CRC = 0;
  std::uint8_t PacketNum = 0;

  std::uint8_t Get_InvPacketNum() const { return static_cast<std::uint8_t>(255 - PacketNum); }
  /// Whether the frame last given to Let_Packet was sound.
  bool Get_IsValidPacket() const { return valid_; }

  /// Reads a frame. A damaged frame is no failure: IsValidPacket tells. Raises WrongPacket when `frame` holds
  /// no array (its data() is null).
  void Let_Packet(std::span<const std::uint8_t> frame);
  /// The frame of 133 or 1029 bytes; computes CRC. Raises WrongPacket without data or with a PacketSize other
  /// than 1, 2.
  std::vector<std::uint8_t> Get_Packet();
  /// The frame as a hexadecimal listing, 16 bytes a row.
  std::string Get_FriendlyPacketText();

 private:
  bool valid_ = false;
};

/// Packets of one transfer; no value is "no array", as after a transfer that brought nothing.
using PacketArray = std::optional<std::vector<Class_Packet>>;

}  // namespace hy_wristlog
