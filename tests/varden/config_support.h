#pragma once

#include <algorithm>

#include "link/Class_Packet.h"
#include "simulator/checksum.h"
#include "varden_support.h"

namespace hy_wristlog {

/// A block as a logger makes it.
struct Block {
  ByteArray Bytes = ByteArray(256);

  Block& number(std::size_t offset, std::size_t size, std::int64_t value) {
    for (std::size_t i = 0; i < size; ++i, value >>= 8) Bytes[offset + i] = static_cast<std::uint8_t>(value);
    return *this;
  }
  /// "offset:size=value ..."
  Block& numbers(const char* notation) {
    std::istringstream words(notation);
    std::size_t offset = 0, size = 0;
    std::int64_t value = 0;
    for (char mark = 0; words >> offset >> mark >> size >> mark >> value;) number(offset, size, value);
    return *this;
  }
  Block& text(std::size_t offset, std::string_view text) {
    std::copy(text.begin(), text.end(), Bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return *this;
  }
  PacketArray packets() {
    number(0, 2, simulator::checksum(std::span(Bytes).subspan(2)));
    std::vector<Class_Packet> result(2);
    result[0].BinData.assign(Bytes.begin(), Bytes.begin() + 128);
    result[1].BinData.assign(Bytes.begin() + 128, Bytes.end());
    return result;
  }
};

constexpr std::int64_t SpringForward = 1710054000, FallBack = 1730613600;  // 2024 in Eastern

/// A value in every field, none like its neighbour.
inline Block goodBlock() {
  return Block()
      .numbers("2:1=2 3:1=16 4:1=161 5:1=178 22:4=70000 26:1=255 27:1=2 36:1=85 37:1=37 62:1=62 63:1=7")
      .numbers("192:4=1700000000 196:2=65244 198:1=77 199:1=18 200:2=30 206:4=2147483647 210:2=300")
      .numbers("212:1=0 213:1=-60 230:1=18 231:2=1000 233:2=50000 235:2=65535 237:1=13 238:1=12 239:1=90")
      .numbers("240:1=2 241:1=85 242:1=3 243:1=4 244:2=4660 246:2=43981 202:4=1718452800")
      .number(214, 4, SpringForward)
      .number(218, 4, FallBack)
      .text(6, "C12345\xEB")
      .text(28, "01010002")
      .text(64, "2Zo\xEB" + std::string(96, 'x') + "F061519900072201805")
      .text(222, std::string_view("EST\0EDT\0", 8))
      .text(248, "unused 2");
}

}  // namespace hy_wristlog
