#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "simulator/saved_state.h"

namespace hy_wristlog::simulator {

/// A field of the config block; numbers are little-endian.
struct BlockField {
  std::size_t Offset, Size;
};

namespace block {
inline constexpr BlockField Checksum{0, 2}, Version{2, 1}, MemoryUnits{3, 1}, Features1{4, 1},
    Features2{5, 1}, SerialNumber{6, 16}, NextAddress{22, 4}, LowPowerShutdown{26, 1}, Model{27, 1},
    Firmware{28, 8}, MemoryFull{36, 1}, BootLoader{63, 1}, Subject{64, 128}, BatteryDate{192, 4},
    LightCalibration{196, 2}, ActivityCalibration{198, 1}, Mode{199, 1}, EpochLength{200, 2},
    StartTime{202, 4}, StopTime{206, 4}, ZoneBias{210, 2}, ZoneStandardBias{212, 1}, ZoneDaylightBias{213, 1},
    DaylightStart{214, 4}, DaylightEnd{218, 4}, ZoneStandardName{222, 4}, ZoneDaylightName{226, 4},
    DisplayFormats{230, 1}, RedCalibration{231, 2}, GreenCalibration{233, 2}, BlueCalibration{235, 2},
    Button1{237, 1}, Button2{238, 1}, Counters{239, 1}, Threshold{240, 1}, DataAvailable{241, 1},
    ScoreMinimum{242, 1}, ScoreMaximum{243, 1}, OffWristOn{244, 2}, OffWristOff{246, 2}, Unused2{248, 8};
}  // namespace block

inline constexpr std::uint8_t FlagYes = 85, FlagNo = 0, ShutdownNotOccurred = 255;

/// What the loggers record, by the code that the block holds.
enum class Mode : std::uint8_t {
  Off = 0,
  Activity = 1,
  StandardLight = 2,
  ActivityAndStandardLight = 3,
  SpecialLight = 6,
  ActivityAndSpecialLight = 7,
  OffWristFrequency = 8,
  LightCalibration = 18,
  Activity32Hz = 33,
};

/// The 256 bytes in which a logger keeps its settings. The first bytes are the checksum, which is computed
/// anew whenever something was stored.
class ConfigBlock {
 public:
  static constexpr std::size_t Size = 256;
  static constexpr std::size_t WritableFrom = 64;  ///< what a PC may write, to the end

  std::uint32_t number(BlockField field) const;
  std::int32_t signedNumber(BlockField field) const;
  /// Up to the first NUL.
  std::string text(BlockField field) const;

  void set(BlockField field, std::int64_t value);
  /// Cut to the field, filled up with NUL.
  void setText(BlockField field, std::string_view text);
  /// Stores what a PC sent, from `WritableFrom` on.
  void write(std::span<const std::uint8_t> bytes);

  void persist(SavedState& state);

  /// Makes the checksum wrong until something is stored again.
  void damageChecksum() { damaged_ = true; }
  bool checksumDamaged() const { return damaged_; }
  /// The block as it goes out.
  std::array<std::uint8_t, Size> image() const;

 private:
  std::array<std::uint8_t, Size> bytes_{};
  bool damaged_ = false;
};

/// The subject, as a logger's text field holds it.
struct SubjectDetails {
  std::string Identity, Initials, Guid;
  char Gender = '\\';  ///< a backslash: not told
  std::int32_t BirthYear = 1970;
  unsigned BirthMonth = 1, BirthDay = 1;
  std::int32_t WeightTenths = 0, HeightTenths = 0;
  bool operator==(const SubjectDetails&) const = default;
};

std::string encodeSubject(const SubjectDetails& subject);
/// Gives an empty subject for a text that is too short or not of version 2.
SubjectDetails decodeSubject(std::string_view text);

/// What a PC writes into a logger before a recording. Times are UTC seconds since 1970, biases minutes from
/// local time to UTC.
struct RecordingSetup {
  Mode RecordingMode = Mode::Activity;
  std::int32_t EpochLength = 30;
  std::int64_t StartTime = 0, StopTime = 0x7FFFFFFF;
  std::int32_t ZoneBias = 300, ZoneStandardBias = 0, ZoneDaylightBias = -60;
  std::int64_t DaylightStart = 0, DaylightEnd = 0;
  std::string ZoneName = "EST";
  std::uint8_t TimeFormat = 1, DateFormat = 0;  ///< 0 off, 1 12 hours, 2 24 hours; 0 month first, 1 day first
  std::uint8_t Button1 = 5, Button2 = 12;       ///< sums of 1 marker 1, 2 marker 2, 4 light, 8 date and time
  std::uint8_t Threshold = 2;
  SubjectDetails Subject;
};

void store(const RecordingSetup& setup, ConfigBlock& block);
RecordingSetup readSetup(const ConfigBlock& block);

}  // namespace hy_wristlog::simulator
