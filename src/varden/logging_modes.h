#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "hy_wristlog/enumerations.h"
#include "varden/series_set.h"

/// What each model records in each of its modes. Decoder, report, pictures, battery life and workflows look
/// here; docs/contributing.md names what else belongs to a new mode. The compiler warns of everyone who does
/// not know a new kind of part. A mode without a row is refused.
namespace hy_wristlog {

struct VardenRecord;

/// The activity at the beginning of a sample record, one byte.
enum class ActivityPart : std::uint8_t {
  None,
  Code,  ///< a place on the scale of `ActivityScale`
  Raw,   ///< the counts themselves, 32 times a second, so samples are no epochs
};

/// The light in the rest of a sample record.
enum class LightPart : std::uint8_t {
  None,
  Lux,             ///< 2 bytes
  CalibrationLux,  ///< the same 2 bytes, reported with all their digits
  Colours,         ///< 4 bytes: the irradiance of red, green and blue
  Currents,        ///< the same 4 bytes, taken as the currents of the three sensors
  Frequency,       ///< 2 bytes: the off-wrist sensor's frequency, stored as red light
};

enum class ModeUse : std::uint8_t {
  Offered,   ///< can be configured and retrieved
  Internal,  ///< for engineers: only a diagnostic decode takes it
};

/// What a mode does otherwise than all others.
enum class Oddity : std::uint8_t {
  None,
  /// A start while acquiring stores into the light array too. The mode has none, so the decode fails with
  /// Subscript.
  RestartFillsLight,
  SilentOverflow,  ///< light beyond a float becomes -1 without Decode_OverflowOccurred
  /// The mode has arrays, but fails at its first sample and fills nothing before the first start.
  Undecodable,
};

struct LoggingMode {
  enmDeviceType Device;
  enmVardenLoggingMode Mode;
  ActivityPart Activity;
  LightPart Light;
  ModeUse Use = ModeUse::Offered;
  Oddity Odd = Oddity::None;

  constexpr std::int32_t activityBytes() const { return Activity == ActivityPart::None ? 0 : 1; }
  constexpr std::int32_t recordLength() const { return activityBytes() + lightBytes(); }
  constexpr bool samplesAreEpochs() const { return Activity != ActivityPart::Raw; }

  /// The arrays that a sample goes to, and the -1 of an epoch in a gap after a stop.
  constexpr SeriesSet samples() const {
    return static_cast<SeriesSet>((Activity == ActivityPart::None ? 0 : series::Activity) | lightSeries());
  }
  /// The arrays that get -1 in a gap between the configured and the first start.
  constexpr SeriesSet firstFill() const { return Odd == Oddity::Undecodable ? SeriesSet{} : samples(); }
  /// The arrays that get -1 in a gap before a start while acquiring.
  constexpr SeriesSet restartFill() const {
    return Odd == Oddity::RestartFillsLight ? samples() | series::Light : samples();
  }
  constexpr SeriesSet arrays() const {
    using namespace series;
    return samples() | (Device == KR_QUILLANDER ? Marker | Marker2 | Wrist : Marker);
  }

 private:
  constexpr std::int32_t lightBytes() const {
    switch (Light) {
      case LightPart::None:
        return 0;
      case LightPart::Lux:
      case LightPart::CalibrationLux:
      case LightPart::Frequency:
        return 2;
      case LightPart::Colours:
      case LightPart::Currents:
        return 4;
    }
    return {};
  }
  constexpr SeriesSet lightSeries() const {
    switch (Light) {
      case LightPart::None:
        return 0;
      case LightPart::Lux:
      case LightPart::CalibrationLux:
        return series::Light;
      case LightPart::Colours:
      case LightPart::Currents:
        return series::Colours;
      case LightPart::Frequency:
        return series::Red;
    }
    return {};
  }
};

inline constexpr std::array LoggingModes{
    LoggingMode{KR_QUILLANDER, VardenMode_ActivityOnly, ActivityPart::Code, LightPart::None},
    LoggingMode{KR_QUILLANDER, VardenMode_StandardLightOnly, ActivityPart::None, LightPart::Colours,
                ModeUse::Offered, Oddity::RestartFillsLight},
    LoggingMode{KR_QUILLANDER, VardenMode_ActivityAndStandardLight, ActivityPart::Code, LightPart::Colours},
    LoggingMode{KR_QUILLANDER, VardenMode_SpecialLightOnly, ActivityPart::None, LightPart::Lux,
                ModeUse::Offered, Oddity::SilentOverflow},
    LoggingMode{KR_QUILLANDER, VardenMode_ActivityAndSpecialLight, ActivityPart::Code, LightPart::Lux},
    LoggingMode{KR_QUILLANDER, VardenMode_InternalOffWristFrequency, ActivityPart::None, LightPart::Frequency,
                ModeUse::Internal},
    LoggingMode{KR_QUILLANDER, VardenMode_InternalLightCalibration, ActivityPart::None, LightPart::Currents,
                ModeUse::Internal},
    LoggingMode{KR_QUILLANDER, VardenMode_InternalActivity32Hz, ActivityPart::Raw, LightPart::None,
                ModeUse::Internal, Oddity::Undecodable},
    LoggingMode{KR_TOLKA, VardenMode_ActivityOnly, ActivityPart::Code, LightPart::None},
    LoggingMode{KR_TOLKA, VardenMode_StandardLightOnly, ActivityPart::None, LightPart::Lux},
    LoggingMode{KR_TOLKA, VardenMode_ActivityAndStandardLight, ActivityPart::Code, LightPart::Lux},
    LoggingMode{KR_TOLKA, VardenMode_InternalLightCalibration, ActivityPart::None, LightPart::CalibrationLux,
                ModeUse::Internal},
    LoggingMode{KR_TOLKA, VardenMode_InternalActivity32Hz, ActivityPart::Raw, LightPart::None,
                ModeUse::Internal},
};

/// Null for a mode that the model does not have.
constexpr const LoggingMode* findLoggingMode(enmDeviceType device, enmVardenLoggingMode mode) {
  for (const LoggingMode& row : LoggingModes)
    if (row.Device == device && row.Mode == mode) return &row;
  return nullptr;
}

constexpr bool isOffered(enmDeviceType device, enmVardenLoggingMode mode) {
  const LoggingMode* row = findLoggingMode(device, mode);
  return row != nullptr && row->Use == ModeUse::Offered;
}

/// The highest mode that any model offers; they begin with 1.
constexpr enmVardenLoggingMode highestOfferedMode() {
  auto highest = VardenMode_ActivityOnly;
  for (const LoggingMode& row : LoggingModes)
    if (row.Use == ModeUse::Offered) highest = std::max(highest, row.Mode);
  return highest;
}

inline constexpr const char* IncompatibleMode = "Incompatible Logging Mode";

/// The record's mode. Raises WrongDeviceType for a device without modes, and OutOfRange for a mode that the
/// model does not have, from this procedure of Class_VardenLogger.
const LoggingMode& requireLoggingMode(const VardenRecord& record, const char* procedure);

/// The factory has calibrated the light sensors. A Vivid's lux stand on the calibrations of its three
/// colours.
bool hasLightCalibration(const VardenRecord& record);

/// Why a recording of this mode cannot be decoded: a calibration is missing, or the mode is internal and the
/// decode not diagnostic. Null when it can.
const char* refusalToDecode(const LoggingMode& mode, const VardenRecord& record, bool diagnostic);

}  // namespace hy_wristlog
