#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"
#include "timezones/Class_TimeZoneInfo.h"
#include "varden/config/config_block.h"
#include "varden/decode/event_log.h"

namespace hy_wristlog {

/// Bytes; inside std::optional, no value is "holds no array".
using ByteArray = std::vector<std::uint8_t>;

/// The values of one Varden logger. Plain data: codecs and the decoder read and write it, and know of no
/// port.
struct VardenRecord {
#define HY_STORED(Name, Type, Access, Copy) Type Name{};
#include "hy_wristlog/varden_properties.inc"
#define HY_MEMBER(Name, Type, Copy) Type Name{};
#include "varden/record_members.inc"

  /// Seconds of an unread clock and volts of an unread battery are -1 in a new record.
  VardenRecord();

  /// What fncCopyClass hands over; the rest of the copy is as new.
  VardenRecord copy() const;
  /// Everything to zero or empty; the clock and the voltages end at 0, not at -1. WristStatusArray stays when
  /// BlueLightArray is empty.
  void erase();
};

}  // namespace hy_wristlog
