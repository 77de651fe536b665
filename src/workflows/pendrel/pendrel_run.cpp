#include "workflows/pendrel/pendrel_run.h"

#include <string>
#include <utility>

#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "platform/platform.h"

namespace hy_wristlog {

PendrelRun::PendrelRun(MainState& state, const char* procedure, std::vector<std::int32_t> foreseen)
    : WorkflowRun(state, "Class_Main", procedure, std::move(foreseen), ReturnCode::Aborted) {}

/// Why a port did not open is forgotten, or it would count as the failure of the next command.
bool PendrelRun::open(Pendrel& logger, std::int16_t port) {
  if (step([&] { return logger.fncOpenCOMport(port, true); }) == 0) return true;
  globals().emptyErrorStack();
  return endWith(ReturnCode::NotOpened);
}

/// A request may have come in while something slept, so events are served first.
bool PendrelRun::aborted() {
  platform::current().serveEvents();
  return WorkflowRun::aborted();
}

void PendrelRun::close() { state_.pendrel().subCloseCOMport(); }

bool reachPendrelLogger(PendrelRun& run, PendrelWorkflows& workflows, MainState& state, bool searchPort) {
  Pendrel& logger = state.pendrel();
  state.AbortFlag = false;
  state.PendrelProgressPercent = 0;
  std::string portText;
  if (workflows.ChosenPort > 0) state.LegacyCOMport = workflows.ChosenPort;
  const std::int32_t found = workflows.ChosenPort > 0 ? std::int32_t{ReturnCode::Success}
                             : searchPort ? workflows.SearchAndSetLegacyCOMport(state.LegacyCOMport, portText)
                                          : workflows.fncReadCOMportFromINI(state.LegacyCOMport, portText);
  if (found != ReturnCode::Success) return run.endWith(found);

  if (!run.open(logger, state.LegacyCOMport) || run.aborted()) return false;

  // If the reading gives up without a failure, nothing of another logger's set-up may be left.
  logger.record.SerialNumber.clear();
  logger.record.ActivityCalibration = 0;
  run.step([&] { logger.fncReadSetup(); });
  if (logger.record.Get_DeviceType() == Device_Unknown) return run.endWith(ReturnCode::WrongLogger);
  if (logger.record.FirmwareVersion == 0) return run.endWith(ReturnCode::WrongFirmware);
  if (logger.record.ActivityCalibration == 0) return run.endWith(ReturnCode::NoFactoryValues);
  return true;
}

}  // namespace hy_wristlog
