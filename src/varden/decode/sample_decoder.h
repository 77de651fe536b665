#pragma once

#include <array>
#include <cstdint>

#include "varden/decode/decode_walk.h"

namespace hy_wristlog {

class SampleDecoder;

/// What a mode must have before its samples can be decoded.
enum class ModeNeed : std::uint8_t {
  Activity,  ///< ActivityCalibration above 0
  Colours,   ///< red, green and blue calibrations at least 1
  ActivityAndColours,
  Lux,  ///< LightScaleCalibration above 0
  ActivityAndLux,
  Diagnostic,  ///< a diagnostic decode
};

/// One logging mode of one model: its arrays and its sample record.
struct ModeLayout {
  enmDeviceType Device;
  enmVardenLoggingMode Mode;
  ModeNeed Need;
  const char* Refusal;    ///< the failure's text when the need is not met
  SeriesSet Samples;      ///< the arrays its samples and the gaps behind a stop go to
  SeriesSet FirstFill;    ///< -1 in a gap between the configured and the first start
  SeriesSet RunningFill;  ///< -1 in a gap before a start while acquiring
  std::int32_t RecordLength;
  void (*DecodeSample)(SampleDecoder&);  ///< null: arrays, but no samples

  SeriesSet arrays() const;
};

/// Null for a mode that the model does not have.
const ModeLayout* findModeLayout(enmDeviceType device, enmVardenLoggingMode mode);

bool meetsNeed(const VardenRecord& record, ModeNeed need, bool diagnostic);

/// Activity counts by activity code. Codes stand for a scale whose steps grow by one every 32 counts; the
/// counts are scaled by 128 / calibration and end at 32767. -1: no value.
class ActivityScale {
 public:
  explicit ActivityScale(std::uint8_t calibration);
  std::int32_t operator[](std::uint8_t code) const { return counts_[code]; }

 private:
  std::array<std::int32_t, 256> counts_{};
};

/// Turns the sample record at the walk's position into the elements of one epoch.
///
/// Light is 2^(x/32)/128 lux, of a 13-bit x. A colour is 1000000 * 2^(x/32) / 2^30 microwatts per square
/// centimetre (2^36 with the new scale factors), of a 10-bit x, or in light calibration 2^(x/32) / 2^37
/// (2^41).
class SampleDecoder {
 public:
  SampleDecoder(DecodeWalk& walk, bool newLightScaleFactors);

  /// Stores the sample at the walk's index and moves the position behind it. Values are -1 where the record
  /// does not fit, was made in a dock, or is out of range (result 13 or 11). Raises OutOfRange for a mode
  /// without samples.
  void decode();

  template <enmDeviceType Device, enmVardenLoggingMode Mode>
  static void decodeSample(SampleDecoder& decoder);

 private:
  std::int32_t activity(std::uint8_t code) const { return activityScale_[code]; }
  float lux(std::uint8_t high, std::uint8_t low, bool reportOverflow);
  float colour(std::int32_t exponent);
  float single(double value, bool reportOverflow);
  bool blankedByDock();

  DecodeWalk& walk_;
  ActivityScale activityScale_;
  double colourFactor_;
  double colourDivisor_;
};

}  // namespace hy_wristlog
