#include <algorithm>

#include "errors/Procedure.h"
#include "pendrel/Pendrel.h"

namespace hy_wristlog {
namespace {

constexpr std::int16_t MostMemoryKB = 5000;

}  // namespace

std::vector<std::uint8_t> Pendrel::Get_RawData(std::int32_t count) const {
  const std::int64_t wanted =
      count == 0 ? std::int64_t{record.BytesUsed} + PendrelRecord::HeaderBytes : count;
  const auto held = static_cast<std::int64_t>(record.RawData.size());
  return {record.RawData.begin(), record.RawData.begin() + std::clamp<std::int64_t>(wanted, 0, held)};
}

void Pendrel::subInitRawData() {
  Procedure procedure{Module, "subInitRawData"};
  procedure.run([&] {
    if (record.MemorySizeKB < 1 || record.MemorySizeKB > MostMemoryKB)
      throw Failure(FailureNumber::PendrelMemorySize, "Class_Pendrel.subInitRawData", "Invalid memory size");
    record.RawData.assign(static_cast<std::size_t>(record.MemorySizeKB) * 1024, 0);
  });
}

void Pendrel::subSetRawDataBlock(std::int32_t lower, std::int32_t upper,
                                 std::span<const std::uint8_t> bytes) {
  Procedure procedure{Module, "subSetRawDataBlock"};
  procedure.run([&] {
    const auto held = static_cast<std::int64_t>(record.RawData.size());
    const std::int64_t count = std::int64_t{upper} - lower + 1;
    if (lower < 0 || upper < 0 || lower >= held || upper >= held ||
        count > static_cast<std::int64_t>(bytes.size()))
      throw Failure(FailureNumber::PendrelOutOfRange, "Class_Pendrel.subSetRawDataBlock",
                    "Invalid input: upper or lower address is out of bounds");
    std::copy_n(bytes.begin(), std::max<std::int64_t>(count, 0), record.RawData.begin() + lower);
  });
}

}  // namespace hy_wristlog
