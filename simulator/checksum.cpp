#include "simulator/checksum.h"

namespace hy_wristlog::simulator {
namespace {

std::uint16_t feed(std::uint16_t crc, std::uint8_t byte) {
  unsigned value = crc ^ (static_cast<unsigned>(byte) << 8);
  for (int bit = 0; bit < 8; ++bit) value = (value & 0x8000U) != 0 ? (value << 1) ^ 0x1021U : value << 1;
  return static_cast<std::uint16_t>(value);
}

}  // namespace

std::uint16_t checksum(std::span<const std::uint8_t> bytes) {
  std::uint16_t crc = 0;
  for (const std::uint8_t byte : bytes) crc = feed(crc, byte);
  return crc;
}

std::uint16_t checksum(std::string_view text) {
  std::uint16_t crc = 0;
  for (const char c : text) crc = feed(crc, static_cast<std::uint8_t>(c));
  return crc;
}

}  // namespace hy_wristlog::simulator
