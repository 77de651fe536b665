#include <algorithm>

#include "base/code_page.h"
#include "pendrel/Pendrel.h"
#include "workflows/pendrel/pendrel_run.h"
#include "workflows/return_codes.h"

namespace hy_wristlog {

LegacyWorkflows::LegacyWorkflows(Class_Main& main) : state_(*main.state_) {}

const std::shared_ptr<Class_Pendrel>& LegacyWorkflows::LegacyLogger() const { return state_.LegacyLogger; }

std::int16_t LegacyWorkflows::ProgressPercent() const { return state_.LegacyProgressPercent; }

LegacyDetails LegacyWorkflows::Details() const {
  const PendrelRecord& record = state_.pendrel().record;
  LegacyDetails details;
  details.DeviceType = record.Get_DeviceType();
  details.DeviceText = record.Get_DeviceText();
  details.MemorySizeKB = record.MemorySizeKB;
  details.MaxBytesUsed = record.Get_MaxBytesUsed();
  constexpr double LargestMemoryKB = 64;
  details.MaxRecordingTime =
      record.Get_MaxRecordingTime() * std::max<std::int16_t>(record.MemorySizeKB, 0) / LargestMemoryKB;
  details.SetupText = utf8FromAnsiText(record.SetupText);
  const auto read = std::min(record.RawData.size(), static_cast<std::size_t>(state_.LegacyBytesRead));
  details.SetupTouched = state_.LegacySetupTouched;
  details.Memory.assign(record.RawData.begin(), record.RawData.begin() + static_cast<std::ptrdiff_t>(read));
  return details;
}

std::int32_t LegacyWorkflows::ReadLegacySetup(bool SearchCOMport) {
  LegacyRun run(state_, "ReadLegacySetup", {3001, 3002, 3003, 10108});
  return run.run([&] {
    if (reachLegacyLogger(run, *this, state_, SearchCOMport)) run.endWith(ReturnCode::Success);
  });
}

}  // namespace hy_wristlog
