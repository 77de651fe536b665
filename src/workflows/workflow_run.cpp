#include "workflows/workflow_run.h"

#include <algorithm>
#include <utility>

#include "errors/GlobalState.h"

namespace hy_wristlog {

WorkflowRun::WorkflowRun(MainState& state, const char* module, const char* procedure,
                         std::vector<std::int32_t> foreseen, std::optional<std::int32_t> abortCode)
    : state_(state),
      foreseen_(std::move(foreseen)),
      abortCode_(abortCode),
      procedure_(module, procedure, ProcedureKind::Command) {
  procedure_.trap([this](Failure& failure) { return trap(failure); });
  procedure_.cleanUp([this] { close(); });
}

bool WorkflowRun::aborted() {
  if (!state_.AbortFlag) return false;
  abort();
  return true;
}

bool WorkflowRun::endWith(std::int32_t ownCode) {
  code = ownCode;
  ended_ = true;
  return false;
}

TrapAnswer WorkflowRun::trap(const Failure& failure) {
  const std::int32_t earlier = std::exchange(code, failure.Number);
  if (std::find(foreseen_.begin(), foreseen_.end(), failure.Number) == foreseen_.end()) {
    state_.AbortFlag = false;
    return TrapAnswer::Dispatch;
  }
  if (state_.AbortFlag) {
    // The abort has broken off the step: that is no failure of the logger's.
    code = earlier;
    abort();
    return TrapAnswer::Leave;
  }
  globals().emptyErrorStack();
  return mend();
}

void WorkflowRun::abort() {
  breakOff();
  globals().emptyErrorStack();
  state_.AbortFlag = false;
  code = abortCode_.value_or(code);
  ended_ = true;
}

}  // namespace hy_wristlog
