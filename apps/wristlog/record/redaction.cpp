#include "record/redaction.h"

#include "hy_wristlog/failure.h"

namespace wristlog {

SessionRecord redacted(const SessionRecord&) {
  throw hy_wristlog::Failure(hy_wristlog::FailureNumber::InvalidCall, "wristlog", "not redacted");
}

}  // namespace wristlog
