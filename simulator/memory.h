#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/saved_state.h"

namespace hy_wristlog::simulator {

/// A logger's recording memory, plain bytes. The config block tells how many of them are used.
class RecordingMemory {
 public:
  static constexpr std::size_t Unit = 65536;
  static constexpr std::uint8_t Blank = 0xFF;

  explicit RecordingMemory(std::size_t units) : bytes_(units * Unit, Blank) {}

  std::size_t size() const { return bytes_.size(); }
  /// Gives the blank byte for an address outside the memory.
  std::uint8_t read(std::size_t address) const { return address < size() ? bytes_[address] : Blank; }
  /// False outside the memory.
  bool write(std::size_t address, std::uint8_t value) {
    if (address >= size()) return false;
    bytes_[address] = value;
    return true;
  }
  std::span<const std::uint8_t> first(std::size_t count) const {
    return std::span{bytes_}.first(std::min(count, size()));
  }
  void persist(SavedState& state) { state.bytes("memory", bytes_, Blank); }
  void erase() { std::ranges::fill(bytes_, Blank); }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace hy_wristlog::simulator
