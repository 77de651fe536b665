#include "errors/Class_Error.h"

#include <algorithm>
#include <vector>

#include "base/ascii.h"
#include "base/formats.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"

namespace hy_wristlog {
namespace {

constexpr std::int64_t QuietSeconds = 10;
constexpr std::size_t LongestUserName = 127;
constexpr std::size_t HighestStackBound = 100;

std::string userName() {
  try {
    const std::string name = platform::current().environment().userName();
    return std::string(cutAtNul(name).substr(0, LongestUserName));
  } catch (const platform::SystemError&) {
    return {};
  }
}

std::string stamp(const Class_ErrorRecord& record) {
  return std::to_string(record.ErrorNumber) + ":" + record.ErrorModule + "." + record.ErrorProcedure + "@" +
         formatDate(record.ErrorTime, "c");
}

bool here(const Class_ErrorAction& action, const Class_ErrorRecord& record) {
  return action.ErrorModule == record.ErrorModule && action.ErrorProcedure == record.ErrorProcedure;
}

bool everywhere(const Class_ErrorAction& action) {
  return action.ErrorModule == Generic && action.ErrorProcedure == Generic;
}

}  // namespace

Class_Error::Class_Error(const Failure& pending) {
  CurrentError.ErrorTime = now();
  CurrentError.ErrorNumber = pending.Number;
  CurrentError.ErrorDescription = pending.Description;
  CurrentError.ErrorOriginalSource = pending.Source;
  CurrentError.ApplicationName = globals().AppName;
}

std::int32_t Class_Error::fncErrorHandle(std::string_view ActiveMod, std::string_view ActiveProc) {
  try {
    handle(ActiveMod, ActiveProc);
    return CurrentError.ErrorAction;
  } catch (...) {
    const Failure failure = currentFailure();
    platform::current().host().showMessageBox(
        "fncErrorHandle",
        "Error Handling Problem, Err Number: " + std::to_string(failure.Number) + " " + failure.Description,
        static_cast<std::int32_t>(MessageBoxButton::Ok));
  }
  return 0;
}

void Class_Error::handle(std::string_view ActiveMod, std::string_view ActiveProc) {
  GlobalState& state = globals();
  CurrentError.ErrLogonID = userName();
  CurrentError.ErrorModule = ActiveMod;
  CurrentError.ErrorProcedure = ActiveProc;
  if (state.ErrorStack.empty()) state.emptyErrorStack();
  const bool climbs = isSilencedAlready();
  if (CurrentError.ErrorOriginalSource.find('@') == std::string::npos)
    CurrentError.ErrorOriginalSource = stamp(CurrentError);

  if (failures_ < INT16_MAX) ++failures_;
  if (CurrentErrorAction.ProcErrorCountLimit == -1) CurrentErrorAction.ProcErrorCountLimit = 2;
  shownMessages_.clear();
  const bool tooMany = failures_ > CurrentErrorAction.ProcErrorCountLimit;
  CurrentError.Silenced = climbs || (!tooMany && followsLastCommandsFailure());
  if (tooMany)
    CurrentError.ErrorAction = errRaiseAll;
  else
    countInStack();
  if (CurrentError.Silenced && !CommandUnderWay::any())
    CurrentErrorAction.ErrorAction = errExit;
  else
    lookUpAction();
  if (CurrentError.Silenced) {
    CurrentErrorAction.ShowMessageBox = false;
    CurrentErrorAction.LogError = false;
  }

  if (CurrentError.ErrorAction == errRaiseAll) {
    endStorm();
  } else {
    CurrentError.ErrorAction = CurrentErrorAction.ErrorAction;
    decideMessage();
    if (CurrentError.CommandProc &&
        (CurrentError.ErrorAction == errRaise || CurrentError.ErrorAction == errRaiseAll))
      CurrentError.ErrorAction = errExit;
  }
  if (CurrentErrorAction.LogError) CurrentError.LogWasWritten = true;
  pushOnStack();
  if (CurrentErrorAction.LogError && state.saveErrorRecords) state.saveErrorRecords();
  if (CurrentError.ErrorAction == errClose)
    CurrentError.DisplayedMessage = state.AppName + " has encountered a condition that has \r\n" +
                                    "forced the software to close. If this problem persists, \r\n" +
                                    "please contact Halcyra Product Support.\r\n";
}

/// Whether the failure was silenced in an inner procedure; it stays so on its way up to the command.
bool Class_Error::isSilencedAlready() const {
  const auto& last = globals().ErrorStack.back();
  return CommandUnderWay::any() && last && last->Silenced &&
         last->ErrorOriginalSource == CurrentError.ErrorOriginalSource;
}

/// The first failure within seconds of another command's failure counts as that one's echo and is not told. A
/// command that is under way still gets its action, so that it ends as it would without the former failure;
/// otherwise the procedure is left quietly.
bool Class_Error::followsLastCommandsFailure() const {
  const auto& stack = globals().ErrorStack;
  if (stack.size() != 1 || !stack[0]) return false;
  const std::int64_t seconds = secondsBetween(stack[0]->ErrorTime, CurrentError.ErrorTime);
  return seconds >= 0 && seconds < QuietSeconds;
}

void Class_Error::countInStack() {
  const auto& stack = globals().ErrorStack;
  if (stack.size() - 1 > HighestStackBound) {
    CurrentError.ErrorAction = errRaiseAll;
    return;
  }
  std::int32_t same = 0;
  for (std::size_t i = 1; i < stack.size(); ++i) {
    if (!stack[i]) continue;
    const Class_ErrorRecord& record = *stack[i];
    if (record.ErrorAction == errRaiseAll) {
      CurrentError.ErrorAction = errRaiseAll;
      return;
    }
    if (record.ErrorNumber != CurrentError.ErrorNumber || record.ErrorModule != CurrentError.ErrorModule ||
        record.ErrorProcedure != CurrentError.ErrorProcedure)
      continue;
    ++same;
    if (record.MsgboxWasDisplayed) shownMessages_.push_back(record.DisplayedMessage);
  }
  if (same > CurrentErrorAction.ProcErrorCountLimit) CurrentError.ErrorAction = errRaiseAll;
}

bool Class_Error::lookUp(bool (*matches)(const Class_ErrorAction&, const Class_ErrorRecord&)) {
  for (const Class_ErrorAction& action : globals().ErrorActions) {
    if (!matches(action, CurrentError)) continue;
    CurrentErrorAction = action;
    return true;
  }
  return matches(CurrentErrorAction, CurrentError);
}

void Class_Error::lookUpAction() {
  using Action = Class_ErrorAction;
  using Record = Class_ErrorRecord;
  if (lookUp([](const Action& a, const Record& r) { return a.hasNumber(r.ErrorNumber) && here(a, r); }) ||
      lookUp([](const Action& a, const Record& r) { return a.hasGenericNumber() && here(a, r); }) ||
      lookUp([](const Action& a, const Record& r) { return a.hasNumber(r.ErrorNumber) && everywhere(a); }) ||
      lookUp([](const Action& a, const Record&) { return a.hasGenericNumber() && everywhere(a); }))
    return;
  CurrentErrorAction.ErrorAction = errRaise;
  CurrentErrorAction.ShowMessageBox = true;
  CurrentErrorAction.CustomMessageText.clear();
  CurrentErrorAction.LogError = CurrentError.CommandProc;
}

/// Shows no box itself: the record holds what a host should show.
void Class_Error::decideMessage() {
  const std::string message =
      fncAddVbCrLf(CurrentErrorAction.CustomMessageText.empty() ? CurrentError.ErrorDescription
                                                                : CurrentErrorAction.CustomMessageText);
  if (std::find(shownMessages_.begin(), shownMessages_.end(), message) != shownMessages_.end())
    CurrentErrorAction.ShowMessageBox = false;
  CurrentError.MsgboxWasDisplayed = CurrentErrorAction.ShowMessageBox && !message.empty();
  CurrentError.DisplayedMessage = message;
}

void Class_Error::endStorm() {
  if (!CurrentError.CommandProc) {
    CurrentErrorAction.ErrorAction = errRaiseAll;
    return;
  }
  CurrentError.ErrorAction = errExit;
  CurrentError.DisplayedMessage =
      "Application process stopped due to muliple errors\r\n"
      "Please view the error log to determine cause of errors";
  if (globals().saveErrorRecords && !CurrentError.Silenced) globals().saveErrorRecords();
}

void Class_Error::pushOnStack() {
  auto& stack = globals().ErrorStack;
  if (stack.size() <= 1)
    stack.assign(2, std::nullopt);
  else
    stack.emplace_back();
  stack.back() = CurrentError;
  stack.front() = CurrentError;
}

std::string fncAddVbCrLf(std::string_view text) {
  constexpr std::string_view Mark = "vbcrlf";
  std::string result;
  while (!text.empty()) {
    if (equalsIgnoringCase(text.substr(0, Mark.size()), Mark)) {
      result += "\r\n";
      text.remove_prefix(Mark.size());
    } else {
      result += text.front();
      text.remove_prefix(1);
    }
  }
  return result;
}

}  // namespace hy_wristlog
