#include "errors/Procedure.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/faults.h"
#include "errors/GlobalState.h"
#include "platform/platform.h"

namespace hy_wristlog {
namespace {

thread_local std::int32_t commandsUnderWay = 0;

}  // namespace

CommandUnderWay::CommandUnderWay() { ++commandsUnderWay; }
CommandUnderWay::~CommandUnderWay() { --commandsUnderWay; }
bool CommandUnderWay::any() { return commandsUnderWay > 0; }

ErrorStackKept::ErrorStackKept() {
  if (!CommandUnderWay::any()) return;
  stack_ = std::exchange(globals().ErrorStack, {});
  logPath_ = std::exchange(globals().ErrorLogPath, {});
}

ErrorStackKept::~ErrorStackKept() {
  if (!stack_) return;
  globals().ErrorStack = std::move(*stack_);
  globals().ErrorLogPath = std::move(logPath_);
}

Failure currentFailure() {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const platform::SystemError& error) {
    return {error.Number, "HY_Wristlog", platform::current().environment().errorText(error.Number)};
  } catch (const std::bad_alloc&) {
    return {fault::OutOfMemory, "HY_Wristlog", "Out of memory"};
  } catch (const std::length_error&) {
    return {fault::OutOfMemory, "HY_Wristlog", "Out of memory"};
  } catch (const std::exception& problem) {
    return {fault::Internal, "HY_Wristlog", problem.what()};
  }
}

void Procedure::begin() {
  if (kind_ != ProcedureKind::Command) return;
  // Failures from outside commands must not count in this one.
  if (!CommandUnderWay::any()) globals().cutErrorStack();
  underWay_.emplace();
}

Procedure::Next Procedure::answer() {
  Failure failure = currentFailure();
  if (trap_) {
    switch (trap_(failure)) {
      case TrapAnswer::Dispatch:
        break;
      case TrapAnswer::Repeat:
        return Next::Repeat;
      case TrapAnswer::GoOn:
        return Next::GoOn;
      case TrapAnswer::Leave:
        throw Leave{};
      case TrapAnswer::Raise:
        raised_ = std::make_unique<Failure>(failure);
        throw Leave{};
    }
  }
  return dispatch(failure);
}

Procedure::Next Procedure::dispatch(const Failure& failure) {
  if (!error_) error_ = std::make_unique<Class_Error>(failure);
  Class_ErrorAction& action = error_->CurrentErrorAction;
  if (std::find(passedOn_.begin(), passedOn_.end(), failure.Number) != passedOn_.end() &&
      failure.Number != 0) {
    action.ErrorNumber = failure.Number;
    action.ErrorModule = module_;
    action.ErrorProcedure = name_;
    action.ErrorAction = errRaise;
    action.ShowMessageBox = false;
    action.CustomMessageText.clear();
    action.LogError = false;
    action.ProcErrorCountLimit = 5;
  }
  error_->CurrentError.CommandProc = kind_ == ProcedureKind::Command;
  const std::int32_t answer = error_->fncErrorHandle(module_, name_);
  if (answer == errResume) return Next::Repeat;
  if (answer == errResumeNext) return Next::GoOn;
  if (answer == errRaise || answer == errRaiseAll) {
    const Class_ErrorRecord& record = error_->CurrentError;
    raised_ =
        std::make_unique<Failure>(record.ErrorNumber, record.ErrorOriginalSource, record.ErrorDescription);
  }
  throw Leave{};
}

void Procedure::end() {
  if (cleanUp_) ignoringFailures(cleanUp_);
  if (kind_ == ProcedureKind::Command) globals().cutErrorStack();
  underWay_.reset();
}

void Procedure::raiseAgain() const {
  if (raised_) throw Failure(*raised_);
}

}  // namespace hy_wristlog
