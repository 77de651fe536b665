#pragma once

#include <cstdint>

#include "varden/record.h"

/// Logger seconds, the battery's percentage and life, and recording time.
namespace hy_wristlog {

/// Seconds since 1970-01-01, without leap seconds and zone, as a date.
double loggerSecondsToDate(std::int32_t seconds);
/// To the nearest second, halves to even. Raises 11503 for a date below 713.8651851851852, which is as far
/// back as 32 bits reach, and 6 for one beyond 2038-01-19 03:14:07.
std::int32_t dateToLoggerSeconds(double date);

/// Percent, 0 to 100, of a Kestrin Vivid from its voltage and its voltage under load. The drop between them
/// stands for the cell's internal resistance, which grows with age; without a drop the battery counts as
/// full.
float vividBatteryPercent(float voltage, float loadedVoltage);

/// Days that the memory lasts in the record's mode and epoch; `fromPresentFill`: what is left of it. 0 for an
/// epoch below 1 second, and for a mode or device type that records nothing.
double maxRecordingDays(const VardenRecord& record, bool fromPresentFill);

}  // namespace hy_wristlog
