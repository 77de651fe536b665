#include "simulate/events.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "base/dates.h"
#include "engineering/dates.h"
#include "words/say.h"

namespace wristlog {

std::string isoUtc(hy_wristlog::simulator::Moment moment) {
  const double days = std::chrono::duration<double, std::ratio<86400>>(moment).count();
  return hy_wristlog::engineering::isoDate(hy_wristlog::UnixEpochDate + days, "Z");
}

void ServedEvents::tell(hy_wristlog::simulator::Moment now, std::string_view event, const Json& facts,
                        const std::string& words) const {
  if (asJson_) {
    Json document{{"event", event}, {"time", isoUtc(now)}};
    document.update(facts);
    printDocument(document.dump(-1, ' ', false, Json::error_handler_t::replace));
  } else {
    say() << isoUtc(now) << "  " << words << '\n';
  }
  say().flush();
}

}  // namespace wristlog
