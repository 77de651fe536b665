#pragma once

#include <array>
#include <cstdint>

#include "pendrel/record.h"

/// From the memory image to the series. A sample is an activity byte, in PD_Mode_ActivityAndSteps of a steps
/// model a steps byte, and a byte 254 where the wearer set a marker.
namespace hy_wristlog {

/// What the logger's compressed activity bytes stand for: the steps between them grow with the value and by
/// one for every 15 seconds of the epoch, up to 32767; 254 and 255 stand for 0. Negative epochs give what the
/// same arithmetic gives, fault 6 where that goes below 16 bits.
std::array<std::int16_t, 256> expansionTable(std::int16_t epochLength);

/// Decodes BytesUsed bytes behind the header, and one sample at least, into ActivityArray, MarkerArray and
/// StepsArray, counts MarkerCount, and sets Samples at the end. Activity is scaled by 128 /
/// ActivityCalibration, halves to even, up to 32767. Type and mode must be ones that exist.
///
/// Raises 9 when the image ends before the samples do, or BytesUsed is below -127; 11 for an
/// ActivityCalibration of 0 at the first sample that is not 0; 6 for a BytesUsed or epoch that the arithmetic
/// does not bear. Series and MarkerCount then hold what was decoded.
void decodeSamples(PendrelRecord& record);

}  // namespace hy_wristlog
