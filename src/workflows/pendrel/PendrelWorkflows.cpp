#include <algorithm>

#include "base/code_page.h"
#include "pendrel/Pendrel.h"
#include "workflows/pendrel/pendrel_run.h"

namespace hy_wristlog {

using namespace FailureNumber;

PendrelWorkflows::PendrelWorkflows(Class_Main& main) : state_(Inside::of(main)) {}

const std::shared_ptr<Class_Pendrel>& PendrelWorkflows::LegacyLogger() const { return state_.LegacyLogger; }

std::int16_t PendrelWorkflows::ProgressPercent() const { return state_.PendrelProgressPercent; }

PendrelDetails PendrelWorkflows::Details() const {
  const PendrelRecord& record = state_.pendrel().record;
  PendrelDetails details;
  details.DeviceType = record.Get_DeviceType();
  details.DeviceText = record.Get_DeviceText();
  details.MemorySizeKB = record.MemorySizeKB;
  details.MaxBytesUsed = record.Get_MaxBytesUsed();
  constexpr double LargestMemoryKB = 64;
  details.MaxRecordingTime =
      record.Get_MaxRecordingTime() * std::max<std::int16_t>(record.MemorySizeKB, 0) / LargestMemoryKB;
  details.SetupText = utf8FromAnsiText(record.SetupText);
  const auto read = std::min(record.RawData.size(), static_cast<std::size_t>(state_.PendrelBytesRead));
  details.SetupTouched = state_.PendrelSetupTouched;
  details.Memory.assign(record.RawData.begin(), record.RawData.begin() + static_cast<std::ptrdiff_t>(read));
  return details;
}

std::int32_t PendrelWorkflows::ReadPendrelSetup(bool SearchCOMport) {
  PendrelRun run(state_, "ReadPendrelSetup",
                 {NoCharacters, NoFinalCharacter, WrongCharacters, PendrelChecksum});
  return run.run([&] {
    if (reachPendrelLogger(run, *this, state_, SearchCOMport) && !run.aborted())
      run.endWith(ReturnCode::Success);
  });
}

}  // namespace hy_wristlog
