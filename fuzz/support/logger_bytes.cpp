#include "support/logger_bytes.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "simulator/checksum.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {
namespace {

void putNumber(std::vector<std::uint8_t>& bytes, std::size_t at, std::size_t size, std::int64_t value) {
  for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

}  // namespace

std::vector<std::uint8_t> anyBytes(std::size_t count, std::int64_t seed) {
  Values values(seed);
  std::vector<std::uint8_t> bytes(count);
  for (std::uint8_t& byte : bytes) byte = values.byte();
  return bytes;
}

std::vector<std::uint8_t> configBlock(std::int64_t mode, std::int64_t seed) {
  Values values(seed);
  std::vector<std::uint8_t> block(256);
  const auto text = [&](std::size_t at, std::string_view characters) {
    std::copy(characters.begin(), characters.end(), block.begin() + static_cast<std::ptrdiff_t>(at));
  };
  block[2] = block[27] = 2;
  text(6, "V0012345");
  text(28, "01000001");
  text(64, "2Fuzz");
  putNumber(block, 22, 4, values.below(100000));
  block[198] = 128;
  block[199] = static_cast<std::uint8_t>(mode);
  putNumber(block, 200, 2, 60);
  for (const std::size_t date : {192U, 202U, 206U})
    putNumber(block, date, 4, 1577836800 + values.below(100000));
  for (const std::size_t calibration : {196U, 231U, 233U, 235U}) putNumber(block, calibration, 2, 1);
  block[230] = 0x11;
  block[237] = block[238] = 1;
  putNumber(block, 0, 2, simulator::checksum(std::span(block).subspan(2)));
  return block;
}

std::vector<std::uint8_t> activityRecording(std::int64_t epochs, std::int64_t seed) {
  Values values(seed);
  std::vector<std::uint8_t> bytes{253, 1, 0, 0x00, 0xE1, 0x0B, 0x5E};
  for (std::int64_t i = 0; i < epochs; ++i) bytes.push_back(static_cast<std::uint8_t>(values.below(253)));
  return bytes;
}

}  // namespace hy_wristlog::fuzz
