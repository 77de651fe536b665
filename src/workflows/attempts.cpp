#include "workflows/attempts.h"

#include <utility>

#include "errors/GlobalState.h"

namespace hy_wristlog {

Attempts::Attempts(MainState& state, std::vector<std::int32_t> retrySet,
                   std::optional<std::int32_t> abortCode)
    : WorkflowRun(state, "Form_CommsConfigure", "subConfigureKestrin", std::move(retrySet), abortCode) {
  world_->addEventSource(*this);
}

Attempts::~Attempts() { world_->removeEventSource(*this); }

/// A running transfer hears the request at once; everything else hears it at its next checkpoint.
void Attempts::serveEvents() {
  if (state_.AbortFlag && state_.logger().link().Get_DoingXMODEM()) state_.logger().link().subAbortProcess();
}

TrapAnswer Attempts::trap(const Failure& failure) {
  if (failure.Number != FailureNumber::UnknownStructure) return WorkflowRun::trap(failure);
  code = failure.Number;
  globals().emptyErrorStack();
  unknownStructure_ = true;
  return TrapAnswer::GoOn;
}

TrapAnswer Attempts::mend() {
  close();
  if (round_ >= state_.MaxCommunicationRetries - 1) return TrapAnswer::Leave;
  ++round_;
  unknownStructure_ = false;
  attemptFailed_ = true;
  return TrapAnswer::GoOn;
}

void Attempts::breakOff() {
  ignoringFailures([&] { state_.logger().subAbortLoggerComms(); });
}

void Attempts::close() {
  breakOff();
  ignoringFailures([&] { state_.logger().subCloseDevicePort(); });
}

bool reachLogger(Attempts& attempts, MainState& state, const DockedModel& model) {
  std::int16_t docks = 0;
  std::int16_t port = 0;
  if (!attempts.step([&] { port = model.findDock(state.logger(), docks); })) return false;
  if (docks > 1) return attempts.endWith(ReturnCode::TooManyDocks);
  if (docks == 0 || port < 1) return attempts.endWith(ReturnCode::NotFound);
  bool connected = false;
  if (!attempts.step([&] { connected = model.connect(state.logger()); })) return false;
  // A request that ends the waits also ends that for the logger's answer: it is not said to be missing.
  if (!connected && platform::current().endsWaits() && attempts.aborted()) return false;
  if (!connected) return attempts.endWith(ReturnCode::NotFound);
  return attempts.step([&] { state.logger().fncReadVardenSetup(); });
}

bool checkLogger(Attempts& attempts, MainState& state, const DockedModel& model) {
  const VardenLogger& logger = state.logger();
  if (logger.record.DeviceType != model.DeviceType) return attempts.endWith(ReturnCode::WrongLogger);
  if (!logger.fncIsValidFirmware()) return attempts.endWith(ReturnCode::WrongFirmware);
  if (attempts.hasUnknownStructure()) return attempts.endWith(ReturnCode::UnknownStructure);
  return hasFactoryValues(logger.record, model) || attempts.endWith(ReturnCode::NoFactoryValues);
}

}  // namespace hy_wristlog
