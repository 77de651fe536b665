#pragma once

#include <array>
#include <cstdint>

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

 private:
  const std::uint8_t* takeRecord();
  void storeActivity(const std::uint8_t* record);
  void storeLight(const std::uint8_t* record);
  void storeColours(const std::uint8_t* bytes);
  float lux(const std::uint8_t* bytes);
  float colour(std::int32_t exponent);
  float single(double value);
  bool blankedByDock();

  DecodeWalk& walk_;
  const LoggingMode mode_;
  const std::int32_t recordLength_, lightAt_;
  ActivityScale activityScale_;
  double colourFactor_;
  double colourDivisor_;
};

}  // namespace hy_wristlog
