#include <cmath>
#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/configuration.h"
#include "commands/held_recording.h"
#include "engineering/dates.h"
#include "engineering/recording_plan.h"
#include "engineering/zones.h"
#include "recording/json_output.h"
#include "recording/plotted_logger.h"
#include "session/session.h"
#include "words/counted.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

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
  const Configured result = configure(session, modelFromName(options.Model), options);
  const bool good = result.Code == 0;
  if (session.asJson())
    print({{"return_code", result.Code},
           {"return_code_meaning", result.Meaning},
           {"battery_life_remaining", good ? Json(roundedDays(result.Battery)) : Json()},
           {"device_serial_number", good ? Json(result.SerialNumber) : Json()},
           {"recording", good ? plannedJson(*session.logger()) : Json()}});
  else if (good)
    tell(say(), result, *session.logger());
  else
    complain() << "Code " << result.Code << ": " << result.Meaning << '\n';
  return good ? Good : Unsuccessful;
}

}  // namespace wristlog
