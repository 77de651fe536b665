#pragma once

#include "varden/decode/decode_walk.h"

namespace hy_wristlog {

inline constexpr std::uint8_t EventMark = 253;
inline constexpr std::uint8_t StatusMark = 254;
inline constexpr std::int64_t EventRecordLength = 7;
inline constexpr std::int64_t StatusRecordLength = 2;
inline constexpr std::uint8_t AcquisitionStart = 1;
inline constexpr std::uint8_t ResetEvent = 8;

/// Handles the 7-byte event record at the walk's position and moves the position after it.
void handleEventRecord(DecodeWalk& walk);

/// Handles the 2-byte status record at the walk's position and moves the position after it. The record tells
/// of the epoch that follows.
void handleStatusRecord(DecodeWalk& walk);

}  // namespace hy_wristlog
