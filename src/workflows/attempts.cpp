#include "workflows/attempts.h"

#include <algorithm>
#include <utility>

#include "errors/GlobalState.h"

namespace hy_wristlog {
namespace {}  // namespace

Attempts::Attempts(MainState& state, std::vector<std::int32_t> retrySet, std::int32_t abortCode)
    : state_(state), retrySet_(std::move(retrySet)), abortCode_(abortCode) {
  procedure_.trap([this](Failure& failure) { return trap(failure); });
  procedure_.cleanUp([this] { tail(); });
  world_->addEventSource(*this);
}

Attempts::~Attempts() { world_->removeEventSource(*this); }

void Attempts::run(const std::function<void()>& attempt) {
  procedure_.run([&] {
    do {
      commFailed_ = false;
      portFailed_ = false;
      attempt();
    } while (commFailed_ && !ended_);
  });
}

bool Attempts::step(const std::function<void()>& body) {
  if (commFailed_ || ended_) return false;
  procedure_.statement(body);
  return !commFailed_ && !ended_;
}

bool Attempts::aborted() {
  if (!state_.AbortFlag) return false;
  abort();
  return true;
}

bool Attempts::endWith(std::int32_t ownCode) {
  code = ownCode;
  ended_ = true;
  return false;
}

/// The request reaches a running transfer at once; everything else sees it at its next checkpoint.
void Attempts::serveEvents() {
  if (state_.AbortFlag && state_.logger().link().Get_DoingXMODEM()) state_.logger().link().subAbortProcess();
}

TrapAnswer Attempts::trap(const Failure& failure) {
  const std::int32_t earlier = std::exchange(code, failure.Number);
  if (std::find(retrySet_.begin(), retrySet_.end(), failure.Number) != retrySet_.end()) {
    if (state_.AbortFlag) {
      // What the abort broke is no failure of the logger's.
      code = earlier;
      abort();
      return TrapAnswer::Leave;
    }
    globals().emptyErrorStack();
    ignoringFailures([&] { state_.logger().subAbortLoggerComms(); });
    ignoringFailures([&] { state_.logger().subCloseDevicePort(); });
    if (round_ >= state_.MaxCommunicationRetries - 1) return TrapAnswer::Leave;
    ++round_;
    commFailed_ = true;
    return TrapAnswer::GoOn;
  }
  if (failure.Number == FailureNumber::UnknownStructure) {
    globals().emptyErrorStack();
    portFailed_ = true;
    return TrapAnswer::GoOn;
  }
  state_.AbortFlag = false;
  return TrapAnswer::Dispatch;
}

void Attempts::abort() {
  ignoringFailures([&] { state_.logger().subAbortLoggerComms(); });
  globals().emptyErrorStack();
  state_.AbortFlag = false;
  if (abortCode_ != NoCode) code = abortCode_;
  ended_ = true;
}

void Attempts::tail() {
  ignoringFailures([&] { state_.logger().subAbortLoggerComms(); });
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
  if (!connected) return attempts.endWith(ReturnCode::NotFound);
  return attempts.step([&] { state.logger().fncReadVardenSetup(); });
}

bool checkLogger(Attempts& attempts, MainState& state, const DockedModel& model) {
  const VardenLogger& logger = state.logger();
  if (logger.record.DeviceType != model.DeviceType) return attempts.endWith(ReturnCode::WrongLogger);
  if (!logger.fncIsValidFirmware()) return attempts.endWith(ReturnCode::WrongFirmware);
  if (attempts.portFailed()) return attempts.endWith(ReturnCode::UnknownStructure);
  return hasFactoryValues(logger.record, model) || attempts.endWith(ReturnCode::NoFactoryValues);
}

}  // namespace hy_wristlog
