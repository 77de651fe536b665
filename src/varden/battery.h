#pragma once

#include <cstdint>

#include "varden/record.h"

/// The battery's percentage and life, and recording time.
namespace hy_wristlog {

/// Percent, 0 to 100, of a Kestrin Vivid from its voltage and its voltage under load. The drop between them
/// stands for the cell's internal resistance, which grows with age; without a drop the battery counts as
/// full.
float vividBatteryPercent(float voltage, float loadedVoltage);

/// Days that the memory lasts in the record's mode and epoch; `fromPresentFill`: what is left of it. 0 for an
/// epoch below 1 second, and for a mode or device type that records nothing.
double maxRecordingDays(const VardenRecord& record, bool fromPresentFill);

}  // namespace hy_wristlog
