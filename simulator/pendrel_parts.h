#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/saved_state.h"

namespace hy_wristlog::simulator {

/// The model without checksums, the one with them, and the one that also counts steps.
enum class PendrelModel : std::uint8_t { Plain = 13, Checksums = 14, Steps = 27 };

/// Epochs as a Pendrel logger codes them: quarter minutes up to 63, and three short ones.
namespace pendrel_epoch {
/// The seconds of a code; 0 when it stands for no epoch.
inline std::int32_t seconds(std::uint8_t code) {
  switch (code) {
    case 0x81:
      return 2;
    case 0xC1:
      return 5;
    case 0xC2:
      return 10;
    default:
      return code < 64 ? code * 15 : 0;
  }
}
/// The code that stands for so many seconds; throws std::invalid_argument when there is none.
inline std::uint8_t code(std::int32_t length) {
  for (unsigned code = 1; code < 256; ++code)
    if (length > 0 && seconds(static_cast<std::uint8_t>(code)) == length)
      return static_cast<std::uint8_t>(code);
  throw std::invalid_argument("a Pendrel logger has no such epoch");
}
}  // namespace pendrel_epoch

/// The logger's memory: a header, then the recording. The pointer is the number of recorded bytes; below 0 it
/// still lies in the header, and nothing is recorded.
class PendrelMemory {
 public:
  static constexpr std::size_t HeaderSize = 128, BlockSize = 4096;
  static constexpr std::size_t ModeAddress = 109;  ///< of the acquisition mode, in the header
  static constexpr std::uint8_t Blank = 0xFF, ActivityMode = Blank, StepsMode = 'G';
  static constexpr std::int32_t Empty = -static_cast<std::int32_t>(HeaderSize);

  explicit PendrelMemory(std::size_t kilobytes) : bytes_(kilobytes * 1024, Blank) {}

  std::size_t size() const { return bytes_.size(); }
  /// How many recorded bytes fit. In the largest memory the last byte stays blank: after it the pointer would
  /// read FF80, which means that nothing is recorded.
  std::size_t capacity() const { return std::min<std::size_t>(size() - HeaderSize, 0xFF7F); }

  /// Gives the blank byte for an address outside the memory.
  std::uint8_t read(std::size_t address) const { return address < size() ? bytes_[address] : Blank; }
  /// Does nothing outside the memory.
  void write(std::size_t address, std::uint8_t value) {
    if (address < size()) bytes_[address] = value;
  }
  /// A block of 4096 bytes; `number` must be in the memory.
  std::span<const std::uint8_t> block(std::size_t number) const {
    return std::span{bytes_}.subspan(number * BlockSize, BlockSize);
  }
  std::span<const std::uint8_t> recorded() const {
    return std::span{bytes_}.subspan(HeaderSize, std::min(used(), size() - HeaderSize));
  }

  std::int32_t pointer() const { return pointer_; }
  void setPointer(std::int32_t pointer) { pointer_ = pointer; }
  std::size_t used() const { return static_cast<std::size_t>(std::max(pointer_, 0)); }
  /// Returns false and writes nothing when the bytes do not all fit.
  bool append(std::span<const std::uint8_t> bytes) {
    if (used() + bytes.size() > capacity()) return false;
    std::ranges::copy(bytes, bytes_.begin() + static_cast<std::ptrdiff_t>(HeaderSize + used()));
    pointer_ = static_cast<std::int32_t>(used() + bytes.size());
    return true;
  }
  void persist(SavedState& state) {
    state.bytes("memory", bytes_, Blank);
    state.number("memory.pointer", pointer_, Empty, static_cast<std::int64_t>(capacity()));
  }
  /// Blanks the recording; the header stays.
  void clear() {
    std::fill(bytes_.begin() + HeaderSize, bytes_.end(), Blank);
    pointer_ = Empty;
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::int32_t pointer_ = Empty;
};

/// What a PC has written into a logger, as it was sent.
struct PendrelTexts {
  std::string Subject = std::string(64, ' ');
  std::string StartDate = "000000", StartTime = "0000";  ///< ddmmyy and HHmm; the factory leaves zeros
  std::string BatteryDate = "000000";
};

/// The parts of a logger that its recorder and its shell share.
struct PendrelParts {
  PendrelModel Model = PendrelModel::Plain;
  std::uint8_t Firmware = 0, ActivityCalibration = 128, Resets = 0;
  std::uint8_t StatusByte = 0;  ///< what line 3 of the setup tells; it means nothing to anybody
  std::string SerialDigits;
  std::uint8_t EpochCode = 2;
  PendrelTexts Texts;
  PendrelMemory Memory;

  bool hasChecksums() const { return Model != PendrelModel::Plain; }
  std::int32_t epochLength() const { return pendrel_epoch::seconds(EpochCode); }
  bool countsSteps() const {
    return Model == PendrelModel::Steps &&
           Memory.read(PendrelMemory::ModeAddress) == PendrelMemory::StepsMode;
  }
};

}  // namespace hy_wristlog::simulator
