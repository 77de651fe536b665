#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "engineering/docks.h"
#include "engineering/recording.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

struct Status {
  std::int32_t Code = 0;
  std::string Simple, Long;
  std::shared_ptr<hw::Class_VardenLogger> Logger;
  std::shared_ptr<hw::Class_Subject> Subject;
  float BatteryLife = std::numeric_limits<float>::quiet_NaN();
};

Status askStatus(Session& session, hw::enmLoggerPointer model) {
  Status status;
  status.Code = session.main().GetStatus(model, status.Simple, status.Long, status.Logger, status.Subject,
                                         &status.BatteryLife);
  session.endProgress();
  if (interruptRequested()) status.Code = hw::ReturnCode::Aborted;
  return status;
}

/// Whether a logger was read; without one its values are all 0.
bool wasRead(const Status& status) {
  return status.Logger && status.Subject && !status.Logger->Get_ConfigBlock().empty();
}

Json batteryJson(float days) { return std::isnan(days) ? Json() : Json(roundedDays(days)); }

}  // namespace

int runStatus(const CommonOptions& common, const std::string& model) {
  Session session(common);
  const Status status = askStatus(session, modelFromName(model));
  if (session.asJson()) {
    Json document{{"return_code", status.Code},
                  {"simple_status", status.Simple},
                  {"long_status", status.Long},
                  {"battery_life_remaining", batteryJson(status.BatteryLife)},
                  {"logger", wasRead(status) ? loggerJson(*status.Logger) : Json()},
                  {"subject", wasRead(status) ? subjectJson(*status.Subject) : Json()}};
    print(document);
    return status.Code == 0 ? Good : Unsuccessful;
  }
  requireNotStopped();
  if (status.Code != 0) {
    complain() << "Code " << status.Code << ": " << explanationOf(status.Code, modelFromName(model)) << '\n';
    return Unsuccessful;
  }
  say() << status.Simple << '\n';
  if (status.Long != status.Simple) say() << status.Long << '\n';
  const std::string trouble = wasRead(status) ? std::string() : dockTroubleOf(modelFromName(model));
  if (!trouble.empty()) say() << trouble << '\n';
  if (wasRead(status)) {
    say() << "Logger " << status.Logger->Get_SerialNumber() << ", firmware "
          << status.Logger->Get_FirmwareVersion() << ", " << status.Logger->Get_BytesUsed()
          << " bytes recorded\n"
          << engineering::batteryWords(*status.Logger) << '\n';
    if (!status.Subject->Get_Identity().empty())
      say() << "Worn by " << status.Subject->Get_Identity() << '\n';
  }
  return Good;
}

}  // namespace wristlog
