#include "commands/configuration.h"

#include <optional>

#include "commands/held_recording.h"
#include "commands/inquiry.h"
#include "commands/subject_options.h"
#include "commands/zone_option.h"
#include "engineering/dates.h"
#include "engineering/recording_plan.h"
#include "hy_wristlog/docks.h"
#include "hy_wristlog/failure_numbers.h"
#include "session/process.h"
#include "words/meanings.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

std::optional<double> dateOf(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(engineering::dateFromText(text));
}

engineering::RecordingPlan planOf(hw::enmLoggerPointer model, const ConfigureOptions& options) {
  engineering::RecordingPlan plan;
  plan.Model = model;
  plan.Mode = static_cast<hw::enmVardenLoggingMode>(options.Mode);
  plan.EpochLength = options.EpochLength;
  plan.Zone = zoneLetters(options.Zone);
  plan.Daylight = !options.NoDaylight;
  plan.SetTime = dateOf(options.SetTime);
  plan.Start = dateOf(options.Start);
  plan.End = dateOf(options.End.empty() && !options.Start.empty() ? LatestEnd : options.End);
  return plan;
}

/// Raises a failure when a recording would be lost, or when that cannot be told, unless it may be erased.
/// Returns the code of a logger that was not reached.
std::int32_t checkHeld(Session& session, const engineering::RecordingPlan& plan,
                       const ConfigureOptions& options) {
  const Status status = askStatus(session, plan.Model);
  requireNotStopped();
  if (status.Code != 0) return status.Code;
  if (status.Simple == "Error: Too Many Docks") return hw::ReturnCode::TooManyDocks;
  if (!status.wasRead() && !status.Simple.starts_with("Error:")) return hw::ReturnCode::NotFound;
  if (options.Erase) return hw::ReturnCode::Success;
  if (!status.tellsRecording()) {
    const std::string trouble = status.wasRead() ? std::string() : farTroubleOf(plan.Model);
    refuseUnknown(trouble.empty() ? status.Long : trouble);
  }
  const std::string dock = hw::dockInUse();
  const std::string which = !dock.empty()           ? " --dock '" + dock + "'"
                            : options.Model.empty() ? ""
                                                    : " --model " + options.Model;
  requireRetrieved(heldBy(*status.Logger), "wristlog retrieve" + which + " --out FOLDER");
  return hw::ReturnCode::Success;
}

Configured send(Session& session, const engineering::RecordingPlan& plan, const ConfigureOptions& options) {
  hw::Class_Subject subject = subjectFrom(options.Subject);
  Configured result;
  result.Code = checkHeld(session, plan, options);
  if (result.Code != 0) return result;
  const auto seconds = [&](const std::optional<double>& date) {
    return date ? session.main().DateToLoggerSeconds(*date) : 0;
  };
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  result.Code =
      session.main().Configure(plan.Model, plan.Mode, plan.EpochLength, subject, plan.Zone, plan.Daylight,
                               seconds(plan.SetTime), seconds(plan.Start), seconds(plan.End),
                               options.DateFormat == "ddmm" ? hw::DateFormat_DDMM : hw::DateFormat_MMDD,
                               options.TimeFormat == "off"  ? hw::TimeFormat_DisplayOff
                               : options.TimeFormat == "12" ? hw::TimeFormat_12hourAMPM
                                                            : hw::TimeFormat_24hour,
                               &result.Battery, &result.SerialNumber);
  session.endProgress();
  // An aborted configuration returns the code that it had come to.
  if (interruptRequested() && result.SerialNumber.empty()) result.Code = hw::ReturnCode::Aborted;
  return result;
}

}  // namespace

Configured configure(Session& session, hw::enmLoggerPointer model, const ConfigureOptions& options) {
  const engineering::RecordingPlan plan = planOf(model, options);
  const engineering::PlanVerdict verdict = engineering::verdictOn(plan);
  Configured result;
  result.Code = verdict.Code;
  if (result.Code == 0) result = send(session, plan, options);
  if (result.Code == 0) forgetRetrieval(result.SerialNumber);
  result.Meaning =
      !verdict.Why.empty() ? verdict.Why + " No logger was changed."
      : result.Code == hw::ReturnCode::Aborted
          ? "Aborted. A recording that the logger still holds can be retrieved; otherwise configure it again."
          : explanationOf(result.Code, model);
  return result;
}

}  // namespace wristlog
