#include "varden/decode/sample_decoder.h"

#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "varden/failures.h"

namespace hy_wristlog {
namespace {

using namespace series;

constexpr std::int32_t HighestCount = 32767;
constexpr std::uint8_t HighestLuxByte = 32;
constexpr std::uint8_t HighestColourByte = 63;
constexpr double HighestSingle = 3.402823E+38;
constexpr float NoLight = -1;

}  // namespace

ActivityScale::ActivityScale(std::uint8_t calibration) {
  std::int32_t value = 0;
  for (std::size_t code = 0; code < 253; ++code) {
    const double counts = calibration == 0 ? 0 : value * 128.0 / calibration;
    counts_[code] = std::min(roundToInt32(counts), HighestCount);
    value = std::min(value + 1 + value / 32, HighestCount);
  }
  std::fill(counts_.begin() + 253, counts_.end(), -1);
}

SampleDecoder::SampleDecoder(DecodeWalk& walk, bool newLightScaleFactors)
    : walk_(walk),
      mode_(*walk.Mode),
      recordLength_(mode_.recordLength()),
      lightAt_(mode_.activityBytes()),
      activityScale_(walk.Record.ActivityCalibration) {
  if (mode_.Light == LightPart::Currents) {
    colourFactor_ = 1;
    colourDivisor_ = std::exp2(newLightScaleFactors ? 41 : 37);
  } else {
    colourFactor_ = 1000000;
    colourDivisor_ = std::exp2(newLightScaleFactors ? 36 : 30);
  }
}

void SampleDecoder::decode() {
  if (walk_.Quillander) walk_.Arrays.at<Wrist>(walk_.Index) = walk_.takeWristStatus();
  if (mode_.Odd == Oddity::Undecodable)
    raiseFrom(DecodeProcedure, FailureNumber::OutOfRange, IncompatibleMode);
  const std::uint8_t* record = takeRecord();
  storeActivity(record);
  storeLight(record);
}

/// Moves the position after the record there and returns it, or null when its values do not count.
const std::uint8_t* SampleDecoder::takeRecord() {
  const std::int64_t position = walk_.Position;
  walk_.Position += recordLength_;
  if (walk_.Position > walk_.Length || blankedByDock()) return nullptr;
  if (static_cast<std::size_t>(walk_.Position) > walk_.Raw.size()) fault::raise(fault::Subscript);
  return walk_.Raw.data() + position;
}

void SampleDecoder::storeActivity(const std::uint8_t* record) {
  switch (mode_.Activity) {
    case ActivityPart::None:
      return;
    case ActivityPart::Code:
      walk_.Arrays.at<Activity>(walk_.Index) = record ? activityScale_[*record] : -1;
      return;
    case ActivityPart::Raw:
      walk_.Arrays.at<Activity>(walk_.Index) = record ? *record : -1;
      return;
  }
}

void SampleDecoder::storeLight(const std::uint8_t* record) {
  const std::uint8_t* bytes = record ? record + lightAt_ : nullptr;
  switch (mode_.Light) {
    case LightPart::None:
      return;
    case LightPart::Lux:
    case LightPart::CalibrationLux:
      walk_.Arrays.at<Light>(walk_.Index) = bytes ? lux(bytes) : NoLight;
      return;
    case LightPart::Colours:
    case LightPart::Currents:
      storeColours(bytes);
      return;
    case LightPart::Frequency:
      walk_.Arrays.at<Red>(walk_.Index) = bytes ? static_cast<float>(bytes[0] * 256 + bytes[1]) : NoLight;
      return;
  }
}

void SampleDecoder::storeColours(const std::uint8_t* bytes) {
  float red = NoLight, green = NoLight, blue = NoLight;
  if (bytes && *bytes > HighestColourByte) {
    walk_.stop(Decode_Physio_Decode_Error);
  } else if (bytes) {
    const std::int32_t high = *bytes;
    red = colour(bytes[1] + (high & 3) * 256);
    green = colour(bytes[2] + (high & 12) * 64);
    blue = colour(bytes[3] + (high & 48) * 16);
  }
  walk_.Arrays.at<Red>(walk_.Index) = red;
  walk_.Arrays.at<Green>(walk_.Index) = green;
  walk_.Arrays.at<Blue>(walk_.Index) = blue;
}

float SampleDecoder::lux(const std::uint8_t* bytes) {
  if (*bytes > HighestLuxByte) {
    walk_.stop(Decode_Physio_Decode_Error);
    return NoLight;
  }
  return single(std::exp2((bytes[0] * 256 + bytes[1]) / 32.0) / 128);
}

float SampleDecoder::colour(std::int32_t exponent) {
  return single(colourFactor_ * std::exp2(exponent / 32.0) / colourDivisor_);
}

float SampleDecoder::single(double value) {
  if (value <= HighestSingle) return static_cast<float>(value);
  if (mode_.Odd != Oddity::SilentOverflow) walk_.Result = Decode_OverflowOccurred;
  return NoLight;
}

/// Whether what was recorded now was recorded in a dock, or taken out of it. Never for the test modes, which
/// only a diagnostic decode takes.
bool SampleDecoder::blankedByDock() {
  if (walk_.Options.Diagnostic || !(walk_.Docked || walk_.UndockSkip)) return false;
  walk_.UndockSkip = false;
  return true;
}

}  // namespace hy_wristlog
