#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/series.h"
#include "timezones/Class_TimeZoneInfo.h"
#include "varden/config/config_block.h"
#include "varden/decode/event_log.h"

namespace hy_wristlog {

/// Bytes. An empty std::optional of them stands for "holds no array".
using ByteArray = ByteSeries;

/// A model's name as users know it; empty for another type.
constexpr const char* deviceText(enmDeviceType type) {
  if (type == KR_QUILLANDER) return "Kestrin Vivid";
  return type == KR_TOLKA ? "Kestrin 2" : "";
}

/// The values of one Varden logger. Plain data: codecs and the decoder read and write them without knowing a
/// port.
struct VardenRecord {
#define HY_STORED(Name, Type, Access, Copy) Type Name{};
#include "hy_wristlog/varden_properties.inc"
#define HY_MEMBER(Name, Type, Copy) Type Name{};
#include "varden/record_members.inc"

  /// The time of a clock and the voltages of a battery that were not read are -1.
  VardenRecord();

  /// The values that fncCopyClass hands over. The others are as in a new record.
  VardenRecord copy() const;
  /// Sets everything to zero or empty, the clock and the voltages too, which begin at -1. WristStatusArray
  /// stays when BlueLightArray is empty.
  void erase();
};

/// Whether both tell of the same recording: that of one logger with one start and one length.
bool isSameRecording(const VardenRecord& one, const VardenRecord& other);

}  // namespace hy_wristlog
