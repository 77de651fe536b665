#include <cmath>
#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/held_recording.h"
#include "commands/inquiry.h"
#include "engineering/docks.h"
#include "engineering/recording.h"
#include "recording/json_output.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

Json batteryJson(float days) { return std::isnan(days) ? Json() : Json(roundedDays(days)); }

}  // namespace

int runStatus(const CommonOptions& common, const std::string& model) {
  Session session(common);
  const hw::enmLoggerPointer docked = modelFromName(model);
  const Status status = askStatus(session, docked);
  const int exitStatus = status.isKnown() ? Good : Unsuccessful;
  const HeldRecording held = status.wasRead() ? heldBy(*status.Logger) : HeldRecording{};
  if (session.asJson()) {
    print({{"return_code", status.Code},
           {"state_known", status.isKnown()},
           {"simple_status", status.Simple},
           {"long_status", status.Long},
           {"battery_life_remaining", batteryJson(status.BatteryLife)},
           {"retrieval", retrievalJson(held)},
           {"logger", status.wasRead() ? loggerJson(*status.Logger) : Json()},
           {"subject", status.wasRead() ? subjectJson(*status.Subject) : Json()}});
    return exitStatus;
  }
  requireNotStopped();
  if (status.Code != 0) {
    complain() << "Code " << status.Code << ": " << explanationOf(status.Code, docked) << '\n';
    return exitStatus;
  }
  const Speech out = exitStatus == Good ? say() : complain();
  out << status.Simple << '\n';
  std::string trouble = status.wasRead() ? std::string() : farTroubleOf(docked);
  if (trouble.empty()) {
    if (status.Long != status.Simple) out << status.Long << '\n';
    if (!status.wasRead()) trouble = dockTroubleOf(docked);
  }
  if (!trouble.empty()) out << trouble << '\n';
  if (status.wasRead()) {
    out << "Logger " << status.Logger->Get_SerialNumber() << ", firmware "
        << status.Logger->Get_FirmwareVersion() << ", " << status.Logger->Get_BytesUsed()
        << " bytes recorded\n";
    if (held.isThere()) out << retrievalWords(held) << '\n';
    out << engineering::batteryWords(*status.Logger) << '\n';
    if (!status.Subject->Get_Identity().empty()) out << "Worn by " << status.Subject->Get_Identity() << '\n';
  }
  return exitStatus;
}

}  // namespace wristlog
