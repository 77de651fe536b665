#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>

#include "commands/commands.h"
#include "commands/held_recording.h"
#include "commands/inquiry.h"
#include "commands/subject_options.h"
#include "commands/zone_option.h"
#include "engineering/dates.h"
#include "engineering/recording_plan.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure_numbers.h"
#include "recording/json_output.h"
#include "recording/plotted_logger.h"
#include "session/process.h"
#include "session/session.h"
#include "words/counted.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// The end to go with a start when the user names none: the logger takes no start without an end. An end from
/// here on is as good as none.
constexpr const char* LatestEnd = "2038-01-01";

struct Configured {
  std::int32_t Code = 0;
  std::string Why;  ///< more than the code means; empty when nothing more is known
  float Battery = 0;
  std::string SerialNumber;
};

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
  if (!status.tellsRecording()) refuseUnknown(status.Long);
  const std::string model = options.Model.empty() ? "" : " --model " + options.Model;
  requireRetrieved(heldBy(*status.Logger), "wristlog retrieve" + model + " --out FOLDER");
  return hw::ReturnCode::Success;
}

Configured configure(Session& session, hw::enmLoggerPointer model, const ConfigureOptions& options,
                     hw::Class_Subject& subject) {
  const engineering::RecordingPlan plan = planOf(model, options);
  Configured result;
  const engineering::PlanVerdict verdict = engineering::verdictOn(plan);
  result.Code = verdict.Code;
  result.Why = verdict.Why;
  if (result.Code == 0) result.Code = checkHeld(session, plan, options);
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

bool ends(const hw::Class_VardenLogger& logger) {
  return logger.Get_EndTimeGMT() < engineering::dateFromText(LatestEnd);
}

/// What the logger will do, as it was read back from it.
Json plannedJson(const hw::Class_VardenLogger& logger) {
  const double start = logger.Get_StartTimeGMT(), end = logger.Get_EndTimeGMT();
  const bool hasEnd = ends(logger);
  return {{"identity", logger.Get_SubjectIdentity()},
          {"gender", logger.Get_SubjectGender()},
          {"mode", static_cast<std::int32_t>(logger.Get_AcquisitionMode())},
          {"records", modeWords(logger)},
          {"epoch_seconds", logger.Get_EpochLength()},
          {"start_local", engineering::isoLocal(logger, start)},
          {"start_utc", engineering::isoDate(start, "Z")},
          {"end_local", hasEnd ? Json(engineering::isoLocal(logger, end)) : Json()},
          {"end_utc", hasEnd ? Json(engineering::isoDate(end, "Z")) : Json()},
          {"time_zone", logger.Get_TZstandardAbbrev()},
          {"daylight_adjusted", logger.Get_AutoDSTadjust()}};
}

void tell(const Speech& out, const Configured& result, const hw::Class_VardenLogger& logger) {
  out << "Logger " << result.SerialNumber << " is configured.\n"
      << "  Who      " << logger.Get_SubjectIdentity() << ", gender " << logger.Get_SubjectGender() << '\n'
      << "  Mode     " << static_cast<std::int32_t>(logger.Get_AcquisitionMode()) << ", " << modeWords(logger)
      << '\n'
      << "  Epoch    " << counted(logger.Get_EpochLength(), "second") << '\n'
      << "  Start    " << minuteWords(engineering::isoLocal(logger, logger.Get_StartTimeGMT())) << '\n'
      << "  End      ";
  if (ends(logger))
    out << minuteWords(engineering::isoLocal(logger, logger.Get_EndTimeGMT())) << '\n';
  else
    out << "none: until it is retrieved, its memory is full or its battery low\n";
  out << "  Zone     " << logger.Get_TZstandardAbbrev() << ", " << engineering::zoneName(logger);
  if (!logger.Get_AutoDSTadjust()) out << ", without daylight time";
  out << "\n  Battery  about " << counted(std::lround(result.Battery), "day") << '\n';
}

}  // namespace

int runConfigure(const CommonOptions& common, const ConfigureOptions& options) {
  Session session(common);
  hw::Class_Subject subject = subjectFrom(options.Subject);
  const hw::enmLoggerPointer model = modelFromName(options.Model);
  const Configured result = configure(session, model, options, subject);
  const bool good = result.Code == 0;
  if (good) forgetRetrieval(result.SerialNumber);
  const std::string meaning =
      !result.Why.empty() ? result.Why + " No logger was changed."
      : result.Code == hw::ReturnCode::Aborted
          ? "Aborted. A recording that the logger still holds can be retrieved; otherwise configure it again."
          : explanationOf(result.Code, model);
  if (session.asJson())
    print({{"return_code", result.Code},
           {"return_code_meaning", meaning},
           {"battery_life_remaining", good ? Json(roundedDays(result.Battery)) : Json()},
           {"device_serial_number", good ? Json(result.SerialNumber) : Json()},
           {"recording", good ? plannedJson(*session.logger()) : Json()}});
  else if (good)
    tell(say(), result, *session.logger());
  else
    complain() << "Code " << result.Code << ": " << meaning << '\n';
  return good ? Good : Unsuccessful;
}

}  // namespace wristlog
