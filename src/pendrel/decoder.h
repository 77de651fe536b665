#pragma once

#include <array>
#include <cstdint>

#include "pendrel/record.h"

/// Decoding of the memory image into the series. A sample is an activity byte, followed by a steps byte in
/// PD_Mode_ActivityAndSteps of a steps model, and by a byte 254 where the wearer set a marker.
namespace hy_wristlog {

/// What the compressed activity bytes stand for. The distance between neighbours grows with the value and
/// with every 15 seconds of the epoch, up to 32767; 254 and 255 stand for 0. Negative epochs get what the
/// same arithmetic gives, or Overflow below 16 bits.
std::array<std::int16_t, 256> expansionTable(std::int16_t epochLength);

/// Decodes the BytesUsed bytes after the header, but at least one sample, into ActivityArray, MarkerArray and
/// StepsArray, counts MarkerCount, and sets Samples at the end. Activity is scaled by 128 /
/// ActivityCalibration and rounded, halves to even, up to 32767. Type and mode must be known.
///
/// Raises Subscript when the image ends before the samples do, or BytesUsed is below -127; DivisionByZero for
/// an ActivityCalibration of 0 at the first sample that is not 0; Overflow for a BytesUsed or an epoch that
/// the arithmetic cannot hold. Series and MarkerCount then hold what was decoded before.
void decodeSamples(PendrelRecord& record);

}  // namespace hy_wristlog
