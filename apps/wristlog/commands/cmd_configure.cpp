#include <cmath>
#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/subject_options.h"
#include "engineering/dates.h"
#include "hy_wristlog/failure_numbers.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// The end to go with a start when the user names none: the logger takes no start without an end.
constexpr const char* LatestEnd = "2038-01-01";

std::int32_t secondsFromText(Session& session, const std::string& text) {
  return text.empty() ? 0 : session.main().DateToLoggerSeconds(engineering::dateFromText(text));
}

}  // namespace

int runConfigure(const CommonOptions& common, const ConfigureOptions& options) {
  Session session(common);
  hw::Class_Subject subject = subjectFrom(options.Subject);
  const std::string end = options.End.empty() && !options.Start.empty() ? LatestEnd : options.End;
  float battery = 0;
  std::string serialNumber;
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  const hw::enmLoggerPointer model = modelFromName(options.Model);
  std::int32_t code = session.main().Configure(
      model, static_cast<hw::enmVardenLoggingMode>(options.Mode), options.EpochLength, subject,
      upper(options.Zone), !options.NoDaylight, secondsFromText(session, options.SetTime),
      secondsFromText(session, options.Start), secondsFromText(session, end),
      options.DateFormat == "ddmm" ? hw::DateFormat_DDMM : hw::DateFormat_MMDD,
      options.TimeFormat == "off"  ? hw::TimeFormat_DisplayOff
      : options.TimeFormat == "12" ? hw::TimeFormat_12hourAMPM
                                   : hw::TimeFormat_24hour,
      &battery, &serialNumber);
  session.endProgress();
  // An aborted configuration returns the code that it had come to.
  if (interruptRequested() && serialNumber.empty()) code = hw::ReturnCode::Aborted;
  const std::string meaning =
      code == hw::ReturnCode::Aborted
          ? "Aborted. A recording that the logger still holds can be retrieved; otherwise configure it again."
          : explanationOf(code, model);
  if (session.asJson())
    print({{"return_code", code},
           {"return_code_meaning", meaning},
           {"battery_life_remaining", code == 0 ? Json(roundedDays(battery)) : Json()},
           {"device_serial_number", code == 0 ? Json(serialNumber) : Json()}});
  else if (code == 0)
    say() << "Logger " << serialNumber << " is configured for " << subject.Get_Identity()
          << ". Battery: about " << std::lround(battery) << " days.\n";
  else
    complain() << "Code " << code << ": " << meaning << '\n';
  if (code == 0 && subject.Get_Gender().empty())
    complain() << "Without a gender, retrieving ends with warning " << hw::ReturnCode::SubjectUnusable
               << " unless --ignore-warnings is given.\n";
  return code == 0 ? Good : Unsuccessful;
}

}  // namespace wristlog
