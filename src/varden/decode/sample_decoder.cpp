#include "varden/decode/sample_decoder.h"

#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "varden/decode/event_records.h"
#include "varden/failures.h"

namespace hy_wristlog {
namespace {

using namespace series;

constexpr std::int32_t HighestCount = 32767;
constexpr std::uint8_t HighestLuxByte = 32;
constexpr std::uint8_t HighestColourByte = 63;
constexpr double HighestSingle = 3.402823E+38;
constexpr float NoLight = -1;

constexpr std::size_t ColourExponents = 1024;
/// Lux exponents of 12 bits, below all that are beyond a float.
constexpr std::size_t TabledLuxExponents = 4096;
constexpr std::uint8_t HighestTabledLuxByte = TabledLuxExponents / 256 - 1;
constexpr double LuxDivisor = 128;

/// Records that are looked through, and then stored series by series, while the processor's cache holds them.
constexpr std::int64_t RunPiece = 1024;

double lightOf(std::int32_t exponent, double factor, double divisor) {
  return factor * std::exp2(exponent / 32.0) / divisor;
}

template <std::size_t Exponents>
class LightScale : public std::array<float, Exponents> {
 public:
  LightScale(double factor, double divisor) : std::array<float, Exponents>{} {
    for (std::size_t exponent = 0; exponent < Exponents; ++exponent)
      (*this)[exponent] = static_cast<float>(lightOf(static_cast<std::int32_t>(exponent), factor, divisor));
  }
};

/// Light by its exponent, each scale made when it is first needed.
std::span<const float> lightScale(LightPart part, bool newFactors) {
  switch (part) {
    case LightPart::None:
    case LightPart::Frequency:
      return {};
    case LightPart::Lux:
    case LightPart::CalibrationLux: {
      static const LightScale<TabledLuxExponents> lux{1, LuxDivisor};
      return lux;
    }
    case LightPart::Colours: {
      static const LightScale<ColourExponents> scales[]{{1000000, std::exp2(30)}, {1000000, std::exp2(36)}};
      return scales[newFactors ? 1 : 0];
    }
    case LightPart::Currents: {
      static const LightScale<ColourExponents> scales[]{{1, std::exp2(37)}, {1, std::exp2(41)}};
      return scales[newFactors ? 1 : 0];
    }
  }
  return {};
}

// Functions of bytes, as objects so that they are a part of the loop that applies them.
constexpr auto number = [](const std::uint8_t* bytes) { return std::size_t{bytes[0]} * 256 + bytes[1]; };
// The exponents of the three colours; their upper bits share a byte.
constexpr auto redExponent = [](const std::uint8_t* bytes) {
  return bytes[1] + (bytes[0] & std::size_t{3}) * 256;
};
constexpr auto greenExponent = [](const std::uint8_t* bytes) {
  return bytes[2] + (bytes[0] & std::size_t{12}) * 64;
};
constexpr auto blueExponent = [](const std::uint8_t* bytes) {
  return bytes[3] + (bytes[0] & std::size_t{48}) * 16;
};

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
      activityScale_(walk.Record.ActivityCalibration),
      lightScale_(lightScale(mode_.Light, newLightScaleFactors)) {}

void SampleDecoder::decode() {
  if (walk_.Quillander) walk_.Arrays.at<Wrist>(walk_.Index) = walk_.takeWristStatus();
  if (mode_.Odd == Oddity::Undecodable)
    raiseFrom(DecodeProcedure, FailureNumber::OutOfRange, IncompatibleMode);
  if (const std::uint8_t* record = takeRecord()) {
    storeActivity(record);
    storeLight(record);
  } else {
    walk_.Arrays.storeNoValue(mode_.samples(), walk_.Index);
  }
}

/// Moves the position after the record there and returns it, or null when its values do not count.
const std::uint8_t* SampleDecoder::takeRecord() {
  const std::int64_t position = walk_.Position;
  walk_.Position += recordLength_;
  if (walk_.Position > walk_.Length) return nullptr;
  if (inDock()) {
    walk_.UndockSkip = false;
    return nullptr;
  }
  if (static_cast<std::size_t>(walk_.Position) > walk_.Raw.size()) fault::raise(fault::Subscript);
  return recordAt(position);
}

void SampleDecoder::storeActivity(const std::uint8_t* record) {
  switch (mode_.Activity) {
    case ActivityPart::None:
      return;
    case ActivityPart::Code:
      walk_.Arrays.at<Activity>(walk_.Index) = activityScale_[*record];
      return;
    case ActivityPart::Raw:
      walk_.Arrays.at<Activity>(walk_.Index) = *record;
      return;
  }
}

void SampleDecoder::storeLight(const std::uint8_t* record) {
  const std::uint8_t* bytes = record + lightAt_;
  switch (mode_.Light) {
    case LightPart::None:
      return;
    case LightPart::Lux:
    case LightPart::CalibrationLux:
      walk_.Arrays.at<Light>(walk_.Index) = lux(bytes);
      return;
    case LightPart::Colours:
    case LightPart::Currents:
      storeColours(bytes);
      return;
    case LightPart::Frequency:
      walk_.Arrays.at<Red>(walk_.Index) = static_cast<float>(number(bytes));
      return;
  }
}

void SampleDecoder::storeColours(const std::uint8_t* bytes) {
  float red = NoLight, green = NoLight, blue = NoLight;
  if (*bytes > HighestColourByte) {
    walk_.stop(Decode_Physio_Decode_Error);
  } else {
    red = lightScale_[redExponent(bytes)];
    green = lightScale_[greenExponent(bytes)];
    blue = lightScale_[blueExponent(bytes)];
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
  return single(lightOf(static_cast<std::int32_t>(number(bytes)), 1, LuxDivisor));
}

float SampleDecoder::single(double value) {
  if (value <= HighestSingle) return static_cast<float>(value);
  if (mode_.Odd != Oddity::SilentOverflow) walk_.Result = Decode_OverflowOccurred;
  return NoLight;
}

/// Whether what was recorded now was recorded in a dock, or taken out of it. Never for the test modes, which
/// only a diagnostic decode takes.
bool SampleDecoder::inDock() const { return !walk_.Options.Diagnostic && (walk_.Docked || walk_.UndockSkip); }

void SampleDecoder::decodeRun(std::int64_t end) {
  if (inDock()) return;
  const std::int64_t last = std::min({end, walk_.Length, static_cast<std::int64_t>(walk_.Raw.size())});
  std::int64_t most =
      std::min((last - walk_.Position) / recordLength_, walk_.Arrays.upperBound() + 1 - walk_.Index);
  while (most > 0) {
    const std::int64_t piece = std::min(most, RunPiece), count = plainRecords(piece);
    if (count > 0) storeRun(count);
    most = count == piece ? most - count : 0;
  }
}

/// How many of the next `most` records can be stored without a further look: no marks, and light that the
/// scale has.
std::int64_t SampleDecoder::plainRecords(std::int64_t most) const {
  const std::uint8_t* record = recordAt(walk_.Position);
  const bool hasScale = !lightScale_.empty();
  const std::uint8_t highest =
      lightScale_.size() == ColourExponents ? HighestColourByte : HighestTabledLuxByte;
  std::int64_t count = 0;
  for (; count < most; ++count, record += recordLength_) {
    const bool isMark = *record == EventMark || *record == StatusMark;
    if (isMark || (hasScale && record[lightAt_] > highest)) break;
  }
  return count;
}

void SampleDecoder::storeRun(std::int64_t count) {
  if (walk_.Quillander)
    std::ranges::fill(walk_.Arrays.run<Wrist>(walk_.Index, count), walk_.takeWristStatus());
  switch (mode_.Activity) {
    case ActivityPart::None:
      break;
    case ActivityPart::Code:
      storeRun<Activity>(count, [this](const std::uint8_t* record) { return activityScale_[*record]; });
      break;
    case ActivityPart::Raw:
      storeRun<Activity>(count, [](const std::uint8_t* record) { return *record; });
      break;
  }
  const auto light = [this](auto exponentOf) {
    return [at = lightAt_, scale = lightScale_.data(), exponentOf](const std::uint8_t* record) {
      return scale[exponentOf(record + at)];
    };
  };
  switch (mode_.Light) {
    case LightPart::None:
      break;
    case LightPart::Lux:
    case LightPart::CalibrationLux:
      storeRun<Light>(count, light(number));
      break;
    case LightPart::Colours:
    case LightPart::Currents:
      storeRun<Red>(count, light(redExponent));
      storeRun<Green>(count, light(greenExponent));
      storeRun<Blue>(count, light(blueExponent));
      break;
    case LightPart::Frequency:
      storeRun<Red>(count, [](const std::uint8_t* record) { return static_cast<float>(number(record)); });
      break;
  }
  walk_.Position += count * recordLength_;
  walk_.Index += count;
}

template <SeriesSet Which, class ValueOf>
void SampleDecoder::storeRun(std::int64_t count, const ValueOf& valueOf) {
  const std::uint8_t* record = recordAt(walk_.Position);
  for (auto& element : walk_.Arrays.run<Which>(walk_.Index, count)) {
    element = valueOf(record);
    record += recordLength_;
  }
}

}  // namespace hy_wristlog
