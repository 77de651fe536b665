#include "varden/config/wire_codes.h"

#include <algorithm>
#include <iterator>

namespace hy_wristlog {
namespace {

template <class RowType>
struct Code {
  RowType Row;
  std::uint8_t Wire;
  std::string_view Friendly;
};

template <class Row>
struct Codes;

template <>
struct Codes<enmVardenLoggingMode> {
  static constexpr auto Unknown = VardenMode_Unknown;
  static constexpr Code<enmVardenLoggingMode> Rows[] = {
      {VardenMode_ActivityOnly, 1, "Activity Only (1)"},
      {VardenMode_StandardLightOnly, 2, "Standard Light Only (Quillander=RGB, Tolka=lux) (2)"},
      {VardenMode_ActivityAndStandardLight, 3, "Activity & Standard Light (Quillander=RGB, Tolka=lux) (3)"},
      {VardenMode_SpecialLightOnly, 6, "Special Light Only (Quillander Only=lux) (6)"},
      {VardenMode_ActivityAndSpecialLight, 7, "Activity & Special Light (Quillander Only=lux) (7)"},
      {VardenMode_Off, 0, "Off (0)"},
      {VardenMode_InternalOffWristFrequency, 8,
       "[Internal] Off-wrist frequency reporting (Quillander Only) (8)"},
      {VardenMode_InternalLightCalibration, 18, "[Internal] Light calibration mode (18)"},
      // The text says 32, the code is 33.
      {VardenMode_InternalActivity32Hz, 33, "[Internal] Activity 32 Hz mode (32)"},
  };
};

template <>
struct Codes<enmTimeFormat> {
  static constexpr auto Unknown = TimeFormat_Unknown;
  static constexpr Code<enmTimeFormat> Rows[] = {
      {TimeFormat_DisplayOff, 0, "Off (0)"},
      {TimeFormat_12hourAMPM, 1, "12 Hour (12)"},
      {TimeFormat_24hour, 2, "24 hour (24)"},
  };
};

template <>
struct Codes<enmDateFormat> {
  static constexpr auto Unknown = DateFormat_Unknown;
  static constexpr Code<enmDateFormat> Rows[] = {
      {DateFormat_MMDD, 0, "MMDD (0)"},
      {DateFormat_DDMM, 1, "DDMM (1)"},
  };
};

/// The wire carries a set of bits: 1 marker 1, 2 marker 2, 4 backlight, 8 date and time.
template <>
struct Codes<enmButtonMap> {
  static constexpr auto Unknown = ButtonMap_Unknown;
  static constexpr Code<enmButtonMap> Rows[] = {
      {ButtonMap_Marker1Only, 1, "Marker 1 Only (0x1)"},
      {ButtonMap_Marker2Only, 2, "Marker 2 Only (0x2)"},
      {ButtonMap_BacklightOnly, 4, "Backlight Only (0x4)"},
      {ButtonMap_DateTimeOnly, 8, "Date/Time Only (0x8)"},
      {ButtonMap_Marker1AndBacklight, 5, "Marker 1 And Backlight (0x5)"},
      {ButtonMap_Marker2AndBacklight, 6, "Marker 2 And Backlight (0x6)"},
      {ButtonMap_BacklightAndDateTime, 12, "Backlight and Date/Time (0xC)"},
      {ButtonMap_Marker1AndDateTime, 9, "Marker 1 and Date/Time (0x9)"},
      {ButtonMap_Marker2AndDateTime, 10, "Marker 2 and Date/Time (0xA)"},
      {ButtonMap_Marker1BacklightDateTime, 13, "Marker 1, Backlight, and Date/Time (0xD)"},
      {ButtonMap_Marker2BacklightDateTime, 14, "Marker 2, Backlight, and Date/Time (0xE)"},
  };
};

template <>
struct Codes<enmDataAvailable> {
  static constexpr auto Unknown = DataAvail_Unknown;
  static constexpr Code<enmDataAvailable> Rows[] = {
      {DataAvail_No, 0, "Data not available (0)"},
      {DataAvail_Yes, 85, "Data available (1)"},
  };
};

template <>
struct Codes<enmMemoryFull> {
  static constexpr auto Unknown = MemFull_Unknown;
  static constexpr Code<enmMemoryFull> Rows[] = {
      {MemFull_No, 0, "Memory not full (0)"},
      {MemFull_Yes, 85, "Memory full (0x55)"},
  };
};

template <>
struct Codes<enmLowPowerShutdown> {
  static constexpr auto Unknown = LowPower_Unknown;
  static constexpr Code<enmLowPowerShutdown> Rows[] = {
      {LowPower_ShutdownOccurred, 85, "Shutdown Occurred (0x55)"},
      // The text says 0x0, the code is 255.
      {LowPower_ShutdownNotOccurred, 255, "Shutdown Did NOT Occur (0x0)"},
  };
};

template <class Row>
const Code<Row>* findRow(Row row) {
  const auto& rows = Codes<Row>::Rows;
  const auto found =
      std::find_if(std::begin(rows), std::end(rows), [&](const auto& code) { return code.Row == row; });
  return found != std::end(rows) ? found : nullptr;
}

}  // namespace

template <class Row>
Row rowOfWire(std::int32_t wire) {
  for (const auto& code : Codes<Row>::Rows)
    if (code.Wire == wire) return code.Row;
  return Codes<Row>::Unknown;
}

template <class Row>
std::optional<std::uint8_t> wireOfRow(Row row) {
  const auto* code = findRow(row);
  return code != nullptr ? std::optional(code->Wire) : std::nullopt;
}

template <class Row>
std::string_view friendlyText(Row row) {
  const auto* code = findRow(row);
  return code != nullptr ? code->Friendly : "Unknown";
}

#define HY_INSTANTIATE(Row)                                 \
  template Row rowOfWire<Row>(std::int32_t);                \
  template std::optional<std::uint8_t> wireOfRow<Row>(Row); \
  template std::string_view friendlyText<Row>(Row);
HY_INSTANTIATE(enmVardenLoggingMode)
HY_INSTANTIATE(enmTimeFormat)
HY_INSTANTIATE(enmDateFormat)
HY_INSTANTIATE(enmButtonMap)
HY_INSTANTIATE(enmDataAvailable)
HY_INSTANTIATE(enmMemoryFull)
HY_INSTANTIATE(enmLowPowerShutdown)
#undef HY_INSTANTIATE

}  // namespace hy_wristlog
