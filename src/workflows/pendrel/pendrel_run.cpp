#include "workflows/pendrel/pendrel_run.h"

#include <algorithm>
#include <string>
#include <utility>

#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "platform/platform.h"

namespace hy_wristlog {

PendrelRun::PendrelRun(MainState& state, const char* procedure, std::vector<std::int32_t> foreseen)
    : state_(state),
      foreseen_(std::move(foreseen)),
      procedure_("Class_Main", procedure, ProcedureKind::Command) {
  procedure_.trap([this](Failure& failure) { return trap(failure); });
  procedure_.cleanUp([this] { state_.pendrel().subCloseCOMport(); });
}

/// The reason of a port that did not open is forgotten with it, or it would pass for the failure of the next
/// command.
bool PendrelRun::open(Pendrel& logger, std::int16_t port) {
  if (step([&] { return logger.fncOpenCOMport(port, true); }) == 0) return true;
  globals().emptyErrorStack();
  return endWith(ReturnCode::NotOpened);
}

bool PendrelRun::aborted() {
  // What came in while something slept.
  platform::current().serveEvents();
  if (!state_.AbortFlag) return false;
  abort();
  return true;
}

bool PendrelRun::endWith(std::int32_t ownCode) {
  code = ownCode;
  return false;
}

TrapAnswer PendrelRun::trap(const Failure& failure) {
  code = failure.Number;
  if (std::find(foreseen_.begin(), foreseen_.end(), failure.Number) == foreseen_.end()) {
    state_.AbortFlag = false;
    return TrapAnswer::Dispatch;
  }
  globals().emptyErrorStack();
  if (state_.AbortFlag) abort();
  return TrapAnswer::Leave;
}

void PendrelRun::abort() {
  globals().emptyErrorStack();
  state_.AbortFlag = false;
  code = ReturnCode::Aborted;
}

bool reachPendrelLogger(PendrelRun& run, PendrelWorkflows& workflows, MainState& state, bool searchPort) {
  Pendrel& logger = state.pendrel();
  state.AbortFlag = false;
  state.PendrelProgressPercent = 0;
  std::string portText;
  const std::int32_t found = searchPort ? workflows.SearchAndSetLegacyCOMport(state.LegacyCOMport, portText)
                                        : workflows.fncReadCOMportFromINI(state.LegacyCOMport, portText);
  if (found != ReturnCode::Success) return run.endWith(found);

  if (!run.open(logger, state.LegacyCOMport) || run.aborted()) return false;

  // A reading that ends without a failure must not go on with another logger's set-up.
  logger.record.SerialNumber.clear();
  logger.record.ActivityCalibration = 0;
  run.step([&] { logger.fncReadSetup(); });
  if (logger.record.Get_DeviceType() == Device_Unknown) return run.endWith(ReturnCode::WrongLogger);
  if (logger.record.FirmwareVersion == 0) return run.endWith(ReturnCode::WrongFirmware);
  if (logger.record.ActivityCalibration == 0) return run.endWith(ReturnCode::NoFactoryValues);
  return !run.aborted();
}

}  // namespace hy_wristlog
