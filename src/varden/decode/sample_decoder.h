#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "varden/decode/decode_walk.h"

namespace hy_wristlog {

/// Activity counts by activity code. The counts of the codes grow by a step, which itself grows by one every
/// 32 counts. They are scaled by 128 / calibration and end at 32767. -1 stands for no value.
class ActivityScale {
 public:
  explicit ActivityScale(std::uint8_t calibration);
  std::int32_t operator[](std::uint8_t code) const { return counts_[code]; }

 private:
  std::array<std::int32_t, 256> counts_{};
};

/// Turns the sample record at the walk's position into the elements of one epoch.
///
/// Light is stored as an exponent x of 13 bits: 2^(x/32) / 128 lux. A colour has 10 bits: 1000000 * 2^(x/32)
/// / 2^30 microwatts per square centimetre, or a current of 2^(x/32) / 2^37. The new scale factors divide by
/// 2^36 and 2^41.
class SampleDecoder {
 public:
  SampleDecoder(DecodeWalk& walk, bool newLightScaleFactors);

  /// Stores the sample of the epoch `Index` and moves the position after it. Values are -1 when the record is
  /// cut short, was made in a dock, or is out of range (Decode_Physio_Decode_Error or
  /// Decode_OverflowOccurred). Raises OutOfRange for a mode that cannot be decoded.
  void decode();
  /// Decodes the samples that follow the one of `decode`, many at a time, and moves index and position after
  /// them. It stops before all that is more than values to be stored: a mark, a value out of range, the
  /// position `end`, the end of the bytes or of the arrays. In a dock it does nothing.
  void decodeRun(std::int64_t end);

 private:
  const std::uint8_t* recordAt(std::int64_t position) const { return walk_.Raw.data() + position; }
  const std::uint8_t* takeRecord();
  void storeActivity(const std::uint8_t* record);
  void storeLight(const std::uint8_t* record);
  void storeColours(const std::uint8_t* bytes);
  float lux(const std::uint8_t* bytes);
  float single(double value);
  bool inDock() const;

  std::int64_t plainRecords(std::int64_t most) const;
  void storeRun(std::int64_t count);
  template <SeriesSet Which, class ValueOf>
  void storeRun(std::int64_t count, const ValueOf& valueOf);

  DecodeWalk& walk_;
  const LoggingMode mode_;
  const std::int32_t recordLength_, lightAt_;
  ActivityScale activityScale_;
  std::span<const float> lightScale_;
};

}  // namespace hy_wristlog
