#include <cmath>
#include <nlohmann/json.hpp>

#include "base/dates.h"
#include "commands/pendrel_commands.h"
#include "commands/subject_options.h"
#include "engineering/dates.h"
#include "hy_wristlog/host.h"
#include "platform/platform.h"
#include "recording/json_output.h"
#include "session/pendrel_session.h"
#include "words/counted.h"
#include "words/pendrel_words.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

constexpr const char* HalfConfigured =
    " The logger may hold part of the new set-up, and what it had recorded can no longer be relied on. "
    "Configure it again.";
constexpr const char* DateUnsure = " 'wristlog legacy status' tells which battery date the logger has now.";

/// The last two digits: "02" for 2002.
std::string two(std::int32_t number) {
  const std::string digits = std::to_string(number % 100);
  return digits.size() == 1 ? "0" + digits : digits;
}

/// Day, month and year as the logger takes them, from "yyyy-mm-dd" or, when that is empty, from the machine's
/// clock. Empty for a year that two digits cannot say.
std::string sixDigits(const std::string& date) {
  if (date.empty()) {
    constexpr std::int32_t FirstYear = 1930, LastYear = 2029;
    const hw::CivilTime today = hw::platform::current().clock().local();
    if (today.Year < FirstYear || today.Year > LastYear) return {};
    return two(today.Day) + two(today.Month) + two(today.Year);
  }
  const std::string iso = engineering::isoDate(engineering::dateFromText(date));
  return iso.substr(8, 2) + iso.substr(5, 2) + iso.substr(2, 2);
}

}  // namespace

int runPendrelFindPort(const CommonOptions& common) {
  constexpr ReaderOptions Searching{0, true};
  PendrelSession session(common, Searching);
  std::int16_t port = 0;
  std::string text;
  const std::int32_t code = session.workflows().SearchAndSetLegacyCOMport(port, text);
  return session.end(code, {{"com_port", port > 0 ? Json(port) : Json()}}, [&](const Speech& out) {
    out << "The Pendreader is on COM" << text << ", which is remembered.\n";
  });
}

int runPendrelStatus(const CommonOptions& common, const ReaderOptions& reader) {
  PendrelSession session(common, reader);
  const std::int32_t code = session.workflows().ReadPendrelSetup(reader.Search);
  const hw::PendrelDetails details = session.workflows().Details();
  const bool wasRead = !details.SetupText.empty(), hasSize = details.MemorySizeKB > 0;
  if (!session.asJson() && code != 0 && wasRead) (complain() << "  ").lines(details.SetupText, "  ");
  const std::int16_t port = session.main().Get_LegacyCOMport();
  const auto ifRead = [&](const Json& fact) { return wasRead ? fact : Json(); };
  Json facts{{"com_port", port > 0 ? Json(port) : Json()},
             {"model", ifRead(details.DeviceText)},
             {"device_type", ifRead(static_cast<std::int32_t>(details.DeviceType))},
             {"memory_size_kb", ifRead(hasSize ? Json(details.MemorySizeKB) : Json())},
             {"max_bytes_used", ifRead(details.MaxBytesUsed)},
             {"max_recording_days", ifRead(hasSize ? Json(roundedDays(details.MaxRecordingTime)) : Json())},
             {"problems", wasRead ? Json(problemsOf(session.logger(), details)) : Json::array()},
             {"logger", wasRead ? loggerJson(session.logger()) : Json()},
             {"setup_text", details.SetupText}};
  return session.end(code, facts, [&](const Speech& out) { tellStatus(out, session.logger(), details); });
}

int runPendrelConfigure(const CommonOptions& common, const ReaderOptions& reader,
                        const PendrelConfigureOptions& options) {
  PendrelSession session(common, reader);
  session.main().Let_LegacyClearMemoryOnConfigure(!options.KeepMemory);
  session.showProgress("Configuring; this takes about a minute");
  hw::Class_Subject subject = subjectFrom(options.Subject);
  std::int32_t start = options.Start.empty()
                           ? 0
                           : session.main().DateToLoggerSeconds(engineering::dateFromText(options.Start));
  float battery = 0;
  std::string serialNumber;
  const std::int32_t code = session.workflows().ConfigureLegacy(
      static_cast<hw::enmPDLoggingMode>(options.Mode), options.EpochLength, subject, upper(options.Zone),
      !options.NoDaylight, start, reader.Search, battery, serialNumber);
  const bool good = code == 0;
  const std::string startText =
      good ? engineering::isoDate(hw::UnixEpochDate + start / hw::SecondsPerDay) : std::string();
  const bool hasBattery = good && hasBatteryDate(session.logger());
  const bool countsNone = good && options.Mode == hw::PD_Mode_ActivityAndSteps &&
                          session.workflows().Details().DeviceType != hw::KR_PENDREL_CRC_STEPS;
  const auto words = [&](const Speech& out) {
    out << "Logger " << serialNumber << " is configured for " << subject.Get_Identity() << " and starts at "
        << startText << ". ";
    if (hasBattery)
      out << "Battery: about " << counted(std::lround(battery), "day") << ".\n";
    else
      out << "The date of its battery is unknown: see battery-date.\n";
  };
  const int status = session.end(
      code,
      {{"battery_life_remaining", hasBattery ? Json(roundedDays(battery)) : Json()},
       {"device_serial_number", good ? Json(serialNumber) : Json()},
       {"start_time_local", good ? Json(startText) : Json()},
       {"records_steps", good ? Json(options.Mode == hw::PD_Mode_ActivityAndSteps && !countsNone) : Json()}},
      words, session.workflows().Details().SetupTouched ? HalfConfigured : Unchanged);
  if (countsNone) complain() << "This model counts no steps: it records activity alone.\n";
  return status;
}

int runPendrelBatteryDate(const CommonOptions& common, const ReaderOptions& reader, const std::string& date) {
  PendrelSession session(common, reader);
  const std::string digits = sixDigits(date);
  const std::int32_t code = session.workflows().UpdateBatteryDate(digits, reader.Search);
  const std::string day = engineering::isoDate(session.logger().Get_BatteryDate()).substr(0, 10);
  const float days = session.logger().Get_BattLifeRemaining();
  return session.end(
      code,
      {{"battery_date", code == 0 ? Json(day) : Json()},
       {"battery_life_remaining", code == 0 ? Json(roundedDays(days)) : Json()}},
      [&](const Speech& out) {
        out << "Logger " << session.logger().Get_SerialNumber() << " has a battery of " << day << ": about "
            << counted(std::lround(days), "day") << " left.\n";
      },
      session.logger().Get_SerialNumber().empty() ? "" : DateUnsure);
}

}  // namespace wristlog
