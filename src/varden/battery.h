#pragma once

#include <cstdint>

#include "varden/record.h"

/// The battery's percentage and life, and recording time.
namespace hy_wristlog {

/// The voltage from which a Kestrin 2's battery counts as charged; below it, it is low.
inline constexpr float ChargedTolkaVoltage = 2.9f;

/// The charge of a Kestrin Vivid in percent, from its voltage and its voltage under load. The drop between
/// them comes from the cell's internal resistance, which grows with age. Without a drop the battery counts as
/// full.
float vividBatteryPercent(float voltage, float loadedVoltage);

/// The days that the memory lasts in the record's mode and epoch, or what is left of it with
/// `fromPresentFill`. 0 for an epoch below 1 second and for a mode or device type that records nothing.
double maxRecordingDays(const VardenRecord& record, bool fromPresentFill);

}  // namespace hy_wristlog
