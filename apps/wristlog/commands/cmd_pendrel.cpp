#include <cmath>
#include <nlohmann/json.hpp>

#include "base/dates.h"
#include "commands/held_recording.h"
#include "commands/pendrel_commands.h"
#include "commands/subject_options.h"
#include "commands/zone_option.h"
#include "engineering/dates.h"
#include "engineering/recording_plan.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure.h"
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

/// Raises a failure when a recording would be lost, unless it may be erased. Returns the code of a logger
/// that was not reached.
std::int32_t checkHeld(PendrelSession& session, const ReaderOptions& reader,
                       const PendrelConfigureOptions& options) {
  const std::int32_t code = session.workflows().ReadPendrelSetup(reader.Search);
  if (code == 0 && !options.Erase)
    requireRetrieved(heldBy(session.logger()), "wristlog legacy retrieve --out FOLDER");
  return code;
}

bool recordsSteps(const hw::Class_Pendrel& logger, const hw::PendrelDetails& details) {
  return logger.Get_AcquisitionMode() == hw::PD_Mode_ActivityAndSteps &&
         details.DeviceType == hw::KR_PENDREL_CRC_STEPS;
}

/// When the memory will be full; empty when its size is unknown.
std::string fullAt(const hw::Class_Pendrel& logger, const hw::PendrelDetails& details) {
  if (details.MemorySizeKB < 1) return {};
  return engineering::isoLocal(logger, engineering::startUtc(logger) + details.MaxRecordingTime);
}

/// What the logger will do; nulls without a logger.
Json factsOf(hw::Class_Pendrel* logger, const hw::PendrelDetails& details) {
  const bool good = logger != nullptr;
  const std::string full = good ? fullAt(*logger, details) : std::string();
  Json recording;
  if (good)
    recording = {{"identity", logger->Get_SubjectIdentity()},
                 {"gender", logger->Get_SubjectGender()},
                 {"mode", static_cast<std::int32_t>(logger->Get_AcquisitionMode())},
                 {"epoch_seconds", logger->Get_EpochLength()},
                 {"start_local", engineering::isoLocal(*logger, engineering::startUtc(*logger))},
                 {"start_utc", engineering::isoDate(engineering::startUtc(*logger), "Z")},
                 {"memory_full_local", full.empty() ? Json() : Json(full)},
                 {"time_zone", logger->Get_TimeZoneAbbrev()},
                 {"daylight_adjusted", logger->Get_AutoDSTadjust()}};
  const bool hasBattery = good && hasBatteryDate(*logger);
  return {
      {"battery_life_remaining", hasBattery ? Json(roundedDays(logger->Get_BattLifeRemaining())) : Json()},
      {"device_serial_number", good ? Json(logger->Get_SerialNumber()) : Json()},
      {"start_time_local",
       good ? Json(engineering::isoDate(logger->Get_StartDate() + logger->Get_StartTime())) : Json()},
      {"records_steps", good ? Json(recordsSteps(*logger, details)) : Json()},
      {"recording", recording}};
}

void tellConfigured(const Speech& out, hw::Class_Pendrel& logger, const hw::PendrelDetails& details) {
  const bool steps = recordsSteps(logger, details);
  out << "Logger " << logger.Get_SerialNumber() << " is configured.\n"
      << "  Who      " << logger.Get_SubjectIdentity() << ", gender " << logger.Get_SubjectGender() << '\n'
      << "  Mode     " << static_cast<std::int32_t>(logger.Get_AcquisitionMode()) << ", "
      << (steps ? std::string("activity and steps") : std::string("activity")) << '\n'
      << "  Epoch    " << counted(logger.Get_EpochLength(), "second") << '\n'
      << "  Start    " << minuteWords(engineering::isoLocal(logger, engineering::startUtc(logger))) << '\n'
      << "  End      none: its memory is full";
  if (const std::string full = fullAt(logger, details); !full.empty()) out << " on " << minuteWords(full);
  out << "\n  Zone     " << logger.Get_TimeZoneAbbrev();
  if (!logger.Get_AutoDSTadjust()) out << ", without daylight time";
  out << "\n  Battery  ";
  if (hasBatteryDate(logger))
    out << "about " << counted(std::lround(logger.Get_BattLifeRemaining()), "day") << '\n';
  else
    out << "of unknown date: see battery-date\n";
  if (logger.Get_AcquisitionMode() == hw::PD_Mode_ActivityAndSteps && !steps)
    complain() << "This model counts no steps: it records activity alone.\n";
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
             {"retrieval", ifRead(retrievalJson(heldBy(session.logger())))},
             {"problems", wasRead ? Json(problemsOf(session.logger(), details)) : Json::array()},
             {"logger", wasRead ? loggerJson(session.logger()) : Json()},
             {"setup_text", details.SetupText}};
  return session.end(code, facts, [&](const Speech& out) {
    tellStatus(out, session.logger(), details);
    if (const HeldRecording held = heldBy(session.logger()); held.isThere())
      out << retrievalWords(held) << '\n';
  });
}

int runPendrelConfigure(const CommonOptions& common, const ReaderOptions& reader,
                        const PendrelConfigureOptions& options) {
  PendrelSession session(common, reader);
  const std::string zone = zoneLetters(options.Zone);
  if (!options.Start.empty())
    if (const std::string why =
            engineering::skippedBy(zone, !options.NoDaylight, engineering::dateFromText(options.Start));
        !why.empty())
      throw hw::Failure(hw::ReturnCode::WrongStart, "wristlog", why + Unchanged);
  const std::int32_t reached = checkHeld(session, reader, options);
  if (reached != 0) return session.end(reached, factsOf(nullptr, {}), {}, Unchanged);

  session.main().Let_LegacyClearMemoryOnConfigure(!options.KeepMemory);
  session.showProgress("Configuring; this takes about a minute");
  hw::Class_Subject subject = subjectFrom(options.Subject);
  std::int32_t start = options.Start.empty()
                           ? 0
                           : session.main().DateToLoggerSeconds(engineering::dateFromText(options.Start));
  float battery = 0;
  std::string serialNumber;
  constexpr bool IsFound = false;  // the inquiry has searched
  const std::int32_t code = session.workflows().ConfigureLegacy(
      static_cast<hw::enmPDLoggingMode>(options.Mode), options.EpochLength, subject, zone,
      !options.NoDaylight, start, IsFound, battery, serialNumber);
  const bool good = code == 0;
  if (good) forgetRetrieval(serialNumber);
  const hw::PendrelDetails details = session.workflows().Details();
  return session.end(
      code, factsOf(good ? &session.logger() : nullptr, details),
      [&](const Speech& out) { tellConfigured(out, session.logger(), details); },
      details.SetupTouched ? HalfConfigured : Unchanged);
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
