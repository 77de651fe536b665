#include "varden/decode/sample_decoder.h"

#include <algorithm>
#include <cmath>

#include "base/numbers.h"

namespace hy_wristlog {
namespace {

using namespace series;

constexpr std::int32_t HighestCount = 32767;
constexpr std::uint8_t HighestLuxByte = 32;
constexpr std::uint8_t HighestColourByte = 63;
constexpr double HighestSingle = 3.402823E+38;
constexpr float NoLight = -1;

enum class ActivityPart : std::uint8_t { None, Code, Raw };
enum class LightPart : std::uint8_t { None, Lux, Colours, Count };

struct SampleFormat {
  ActivityPart Activity;
  LightPart Light;
  bool ReportOverflow = true;

  constexpr std::int32_t length() const {
    constexpr std::int32_t LightLengths[] = {0, 2, 4, 2};
    return (Activity == ActivityPart::None ? 0 : 1) + LightLengths[static_cast<int>(Light)];
  }
};

constexpr SampleFormat quillanderFormat(enmVardenLoggingMode mode) {
  switch (mode) {
    case VardenMode_ActivityOnly:
      return {ActivityPart::Code, LightPart::None};
    case VardenMode_StandardLightOnly:
      return {ActivityPart::None, LightPart::Colours};
    case VardenMode_ActivityAndStandardLight:
      return {ActivityPart::Code, LightPart::Colours};
    case VardenMode_SpecialLightOnly:
      return {.Activity = ActivityPart::None, .Light = LightPart::Lux, .ReportOverflow = false};
    case VardenMode_ActivityAndSpecialLight:
      return {ActivityPart::Code, LightPart::Lux};
    case VardenMode_InternalOffWristFrequency:
      return {ActivityPart::None, LightPart::Count};
    default:  // VardenMode_InternalLightCalibration
      return {ActivityPart::None, LightPart::Colours};
  }
}

constexpr SampleFormat tolkaFormat(enmVardenLoggingMode mode) {
  switch (mode) {
    case VardenMode_ActivityOnly:
      return {ActivityPart::Code, LightPart::None};
    case VardenMode_StandardLightOnly:
      return {ActivityPart::None, LightPart::Lux};
    case VardenMode_ActivityAndStandardLight:
      return {ActivityPart::Code, LightPart::Lux};
    case VardenMode_InternalLightCalibration:
      return {ActivityPart::None, LightPart::Lux};
    default:  // VardenMode_InternalActivity32Hz
      return {ActivityPart::Raw, LightPart::None};
  }
}

constexpr SampleFormat sampleFormat(enmDeviceType device, enmVardenLoggingMode mode) {
  return device == KR_QUILLANDER ? quillanderFormat(mode) : tolkaFormat(mode);
}

constexpr const char* NoActivity = "Invalid Activity Calibration";
constexpr const char* NoLightCalibration = "Invalid Light Calibration";
constexpr const char* NoCalibration = "Invalid Calibration";
constexpr const char* NoMode = "Incompatible Logging Mode";

template <enmDeviceType Device, enmVardenLoggingMode Mode>
constexpr ModeLayout layout(ModeNeed need, const char* refusal, SeriesSet samples, SeriesSet firstFill,
                            SeriesSet runningFill) {
  return {Device,
          Mode,
          need,
          refusal,
          samples,
          firstFill,
          runningFill,
          sampleFormat(Device, Mode).length(),
          &SampleDecoder::decodeSample<Device, Mode>};
}

template <enmDeviceType Device, enmVardenLoggingMode Mode>
constexpr ModeLayout layout(ModeNeed need, const char* refusal, SeriesSet samples) {
  return layout<Device, Mode>(need, refusal, samples, samples, samples);
}

// A restart while acquiring in mode 2 also stores into the light array, which that mode does not have.
// Mode 9 of the Quillander has arrays but cannot be decoded.
const std::array ModeLayouts{
    layout<KR_QUILLANDER, VardenMode_ActivityOnly>(ModeNeed::Activity, NoActivity, Activity),
    layout<KR_QUILLANDER, VardenMode_StandardLightOnly>(ModeNeed::Colours, NoLightCalibration, Colours,
                                                        Colours, Colours | Light),
    layout<KR_QUILLANDER, VardenMode_ActivityAndStandardLight>(ModeNeed::ActivityAndColours, NoCalibration,
                                                               Activity | Colours),
    layout<KR_QUILLANDER, VardenMode_SpecialLightOnly>(ModeNeed::Colours, NoLightCalibration, Light),
    layout<KR_QUILLANDER, VardenMode_ActivityAndSpecialLight>(ModeNeed::ActivityAndColours, NoCalibration,
                                                              Activity | Light),
    layout<KR_QUILLANDER, VardenMode_InternalOffWristFrequency>(ModeNeed::Diagnostic, NoMode, Red),
    layout<KR_QUILLANDER, VardenMode_InternalLightCalibration>(ModeNeed::Diagnostic, NoMode, Colours),
    ModeLayout{KR_QUILLANDER, VardenMode_InternalActivity32Hz, ModeNeed::Diagnostic, NoMode, Activity, 0,
               Activity, 1, nullptr},
    layout<KR_TOLKA, VardenMode_ActivityOnly>(ModeNeed::Activity, NoActivity, Activity),
    layout<KR_TOLKA, VardenMode_StandardLightOnly>(ModeNeed::Lux, NoLightCalibration, Light),
    layout<KR_TOLKA, VardenMode_ActivityAndStandardLight>(ModeNeed::ActivityAndLux, NoCalibration,
                                                          Activity | Light),
    layout<KR_TOLKA, VardenMode_InternalLightCalibration>(ModeNeed::Diagnostic, NoMode, Light),
    layout<KR_TOLKA, VardenMode_InternalActivity32Hz>(ModeNeed::Diagnostic, NoMode, Activity),
};

}  // namespace

SeriesSet ModeLayout::arrays() const {
  const SeriesSet marks = Device == KR_QUILLANDER ? Marker | Marker2 | Wrist : Marker;
  return Samples | marks;
}

const ModeLayout* findModeLayout(enmDeviceType device, enmVardenLoggingMode mode) {
  for (const ModeLayout& row : ModeLayouts)
    if (row.Device == device && row.Mode == mode) return &row;
  return nullptr;
}

bool meetsNeed(const VardenRecord& record, ModeNeed need, bool diagnostic) {
  const bool activity = record.ActivityCalibration > 0;
  const bool colours = record.RedLightCalibration >= 1 && record.GreenLightCalibration >= 1 &&
                       record.BlueLightCalibration >= 1;
  const bool lux = record.LightScaleCalibration > 0;
  switch (need) {
    case ModeNeed::Activity:
      return activity;
    case ModeNeed::Colours:
      return colours;
    case ModeNeed::ActivityAndColours:
      return activity && colours;
    case ModeNeed::Lux:
      return lux;
    case ModeNeed::ActivityAndLux:
      return activity && lux;
    case ModeNeed::Diagnostic:
      return diagnostic;
  }
  return false;
}

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
    : walk_(walk), activityScale_(walk.Record.ActivityCalibration) {
  const bool raw = walk.Layout->Mode == VardenMode_InternalLightCalibration;
  colourFactor_ = raw ? 1 : 1000000;
  if (raw)
    colourDivisor_ = std::exp2(newLightScaleFactors ? 41 : 37);
  else
    colourDivisor_ = std::exp2(newLightScaleFactors ? 36 : 30);
}

void SampleDecoder::decode() {
  if (!walk_.Layout->DecodeSample) {
    walk_.Arrays.at<Wrist>(walk_.Index) = walk_.takeWristStatus();
    throw Failure(FailureNumber::OutOfRange, "Class_VardenLogger.fncDecodeDataArrays", NoMode);
  }
  walk_.Layout->DecodeSample(*this);
}

template <enmDeviceType Device, enmVardenLoggingMode Mode>
void SampleDecoder::decodeSample(SampleDecoder& decoder) {
  constexpr SampleFormat Format = sampleFormat(Device, Mode);
  constexpr std::int32_t LightAt = Format.Activity == ActivityPart::None ? 0 : 1;
  DecodeWalk& walk = decoder.walk_;
  EpochArrays& arrays = walk.Arrays;
  const std::int64_t index = walk.Index;

  if constexpr (Device == KR_QUILLANDER) arrays.at<Wrist>(index) = walk.takeWristStatus();

  const std::int64_t position = walk.Position;
  walk.Position += Format.length();
  const bool present = walk.Position <= walk.Length && !decoder.blankedByDock();
  const std::uint8_t* bytes = nullptr;
  if (present) {
    if (static_cast<std::size_t>(walk.Position) > walk.Raw.size()) fault::raise(fault::Subscript);
    bytes = walk.Raw.data() + position;
  }

  if constexpr (Format.Activity == ActivityPart::Code)
    arrays.at<Activity>(index) = present ? decoder.activity(bytes[0]) : -1;
  if constexpr (Format.Activity == ActivityPart::Raw) arrays.at<Activity>(index) = present ? bytes[0] : -1;

  if constexpr (Format.Light == LightPart::Lux)
    arrays.at<Light>(index) =
        present ? decoder.lux(bytes[LightAt], bytes[LightAt + 1], Format.ReportOverflow) : NoLight;
  if constexpr (Format.Light == LightPart::Count)
    arrays.at<Red>(index) = present ? static_cast<float>(bytes[0] * 256 + bytes[1]) : NoLight;
  if constexpr (Format.Light == LightPart::Colours) {
    float red = NoLight, green = NoLight, blue = NoLight;
    if (present) {
      const std::int32_t high = bytes[LightAt];
      if (high > HighestColourByte) {
        walk.stop(Decode_Physio_Decode_Error);
      } else {
        red = decoder.colour(bytes[LightAt + 1] + (high & 3) * 256);
        green = decoder.colour(bytes[LightAt + 2] + (high & 12) * 64);
        blue = decoder.colour(bytes[LightAt + 3] + (high & 48) * 16);
      }
    }
    arrays.at<Red>(index) = red;
    arrays.at<Green>(index) = green;
    arrays.at<Blue>(index) = blue;
  }
}

float SampleDecoder::lux(std::uint8_t high, std::uint8_t low, bool reportOverflow) {
  if (high > HighestLuxByte) {
    walk_.stop(Decode_Physio_Decode_Error);
    return NoLight;
  }
  return single(std::exp2((high * 256 + low) / 32.0) / 128, reportOverflow);
}

float SampleDecoder::colour(std::int32_t exponent) {
  return single(colourFactor_ * std::exp2(exponent / 32.0) / colourDivisor_, true);
}

float SampleDecoder::single(double value, bool reportOverflow) {
  if (value <= HighestSingle) return static_cast<float>(value);
  if (reportOverflow) walk_.Result = Decode_OverflowOccurred;
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
