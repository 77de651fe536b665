#include "varden/record.h"

#include <tuple>
#include <utility>

namespace hy_wristlog {
namespace {

enum class InCopy : std::uint8_t { Copied, NotCopied };

}  // namespace

VardenRecord::VardenRecord() {
  LastLoggerTime = -1;
  BatteryVoltage = -1;
  LoadedBattVoltage = -1;
}

VardenRecord VardenRecord::copy() const {
  VardenRecord result;
#define HY_STORED(Name, Type, Access, Copy) \
  if constexpr (InCopy::Copy == InCopy::Copied) result.Name = Name;
#include "hy_wristlog/varden_properties.inc"
#define HY_MEMBER(Name, Type, Copy) \
  if constexpr (InCopy::Copy == InCopy::Copied) result.Name = Name;
#include "varden/record_members.inc"
  return result;
}

void VardenRecord::erase() {
  // The wrist array goes with the blue light array: it stays when that one is empty.
  TristateSeries wrist;
  if (BlueLightArray.empty()) wrist = std::move(WristStatusArray);
  *this = VardenRecord();
  LastLoggerTime = 0;
  BatteryVoltage = 0;
  LoadedBattVoltage = 0;
  WristStatusArray = std::move(wrist);
}

bool isSameRecording(const VardenRecord& one, const VardenRecord& other) {
  const auto identity = [](const VardenRecord& record) {
    const VardenConfigBlock& block = record.ConfigBlock;
    return std::tie(block.SerialNumber, block.StartTime, block.NextMemoryAddress);
  };
  return identity(one) == identity(other);
}

}  // namespace hy_wristlog
