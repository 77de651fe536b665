#include <cmath>
#include <iostream>

#include "commands.h"
#include "json_output.h"
#include "meanings.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

/// The end that goes with a start when none is asked for: the logger takes no start without one.
constexpr const char* LatestEnd = "2038-01-01";

std::int32_t secondsFromText(Session& session, const std::string& text) {
  return text.empty() ? 0 : session.main().DateToLoggerSeconds(engineering::dateFromText(text));
}

float tenths(float value) { return std::round(value * 10) / 10; }

hw::Class_Subject subjectFrom(const SubjectOptions& options) {
  hw::Class_Subject subject;
  subject.Let_Identity(options.Identity);
  subject.Let_Initials(options.Initials);
  subject.Let_Gender(options.Gender);
  subject.Let_GUID(options.Guid);
  subject.Let_Height(tenths(options.Height));
  subject.Let_Weight(tenths(options.Weight));
  if (!options.BirthDate.empty()) subject.Let_DOB(engineering::dateFromText(options.BirthDate));
  return subject;
}

}  // namespace

int runConfigure(const CommonOptions& common, const ConfigureOptions& options) {
  Session session(common);
  hw::Class_Subject subject = subjectFrom(options.Subject);
  const std::string end = options.End.empty() && !options.Start.empty() ? LatestEnd : options.End;
  float battery = 0;
  std::string serialNumber;
  session.main().Let_MaxCommunicationRetries(options.Attempts);
  const std::int32_t code = session.main().Configure(
      modelFromName(options.Model), static_cast<hw::enmVardenLoggingMode>(options.Mode), options.EpochLength,
      subject, options.Zone, !options.NoDaylight, secondsFromText(session, options.SetTime),
      secondsFromText(session, options.Start), secondsFromText(session, end),
      options.DateFormat == "ddmm" ? hw::DateFormat_DDMM : hw::DateFormat_MMDD,
      options.TimeFormat == "off"  ? hw::TimeFormat_DisplayOff
      : options.TimeFormat == "12" ? hw::TimeFormat_12hourAMPM
                                   : hw::TimeFormat_24hour,
      &battery, &serialNumber);
  session.endProgress();
  if (session.asJson())
    print({{"return_code", code},
           {"return_code_meaning", meaningOf(code)},
           {"battery_life_remaining", code == 0 ? Json(std::round(double{battery} * 10) / 10) : Json()},
           {"device_serial_number", code == 0 ? Json(serialNumber) : Json()}});
  else if (code == 0)
    std::cout << "Logger " << serialNumber << " is configured for " << subject.Get_Identity()
              << ". Battery: about " << std::lround(battery) << " days.\n";
  else
    std::cerr << "Code " << code << ": " << meaningOf(code) << '\n';
  return code == 0 ? Good : Unsuccessful;
}

}  // namespace wristlog
