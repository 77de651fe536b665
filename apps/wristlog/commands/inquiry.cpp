#include "commands/inquiry.h"

#include "hy_wristlog/failure_numbers.h"
#include "session/process.h"
#include "session/session.h"

namespace wristlog {

namespace hw = hy_wristlog;

bool Status::wasRead() const { return Logger && Subject && !Logger->Get_ConfigBlock().empty(); }

bool Status::isKnown() const {
  return Code == 0 && !Simple.starts_with("Error:") && Simple != "Dock Not Connected" &&
         Simple != "Logger Not Found";
}

bool Status::tellsRecording() const { return wasRead() && (isKnown() || Simple == "Error: Unknown Status"); }

Status askStatus(Session& session, hw::enmLoggerPointer model) {
  Status status;
  status.Code = session.main().GetStatus(model, status.Simple, status.Long, status.Logger, status.Subject,
                                         &status.BatteryLife);
  session.endProgress();
  if (interruptRequested()) status.Code = hw::ReturnCode::Aborted;
  return status;
}

}  // namespace wristlog
