#include "commands/commands.h"

#include <nlohmann/json.hpp>

#include "engineering/zone_names.h"
#include "engineering/zones.h"
#include "recording/json_output.h"
#include "session/session.h"
#include "words/say.h"

namespace wristlog {

namespace engineering = hy_wristlog::engineering;

int runZones(const CommonOptions& common) {
  Session session(common);
  const auto zones = engineering::zones();
  const std::string trouble = engineering::localZoneTrouble();
  if (session.asJson()) {
    Json list = Json::array();
    for (const auto& zone : zones)
      list.push_back({{"abbreviation", zone.Abbreviation},
                      {"key", zone.Key},
                      {"display_name", zone.DisplayName},
                      {"iana_name", zone.IanaName},
                      {"bias_minutes", zone.Bias},
                      {"daylight_bias_minutes", zone.DaylightBias},
                      {"has_daylight_time", zone.HasDaylight},
                      {"offset_now_minutes", zone.OffsetNow},
                      {"local", zone.Local}});
    print({{"zones", list}, {"local_zone_trouble", trouble.empty() ? Json() : Json(trouble)}});
    return Good;
  }
  for (const auto& zone : zones)
    say() << (zone.Local ? "* " : "  ") << zone.Abbreviation << "  " << zone.DisplayName
          << (zone.DaylightNow ? " (daylight time now)" : "") << '\n';
  if (!trouble.empty()) complain() << "The machine's own zone is not known. " << trouble << '\n';
  return Good;
}

}  // namespace wristlog
