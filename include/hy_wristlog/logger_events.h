#pragma once

#include <cstdint>
#include <string>

#include "hy_wristlog/api.h"

namespace hy_wristlog {

/// Receives a logger's events, on the thread that works with the logger. A receiver may change the texts:
/// those after it get them changed.
class HY_WRISTLOG_API LoggerEvents {
 public:
  virtual ~LoggerEvents() = default;
  virtual void CommEventError(std::int32_t /*ErrorNum*/, std::string& /*ErrorDescription*/) {}
  virtual void CommProgress(std::string& /*ProgressText*/) {}
  virtual void AbortAcknowledged() {}
  /// As `Host::downloadProgress`.
  virtual void DownloadProgress(std::int32_t /*BytesSoFar*/, std::int32_t /*BytesExpected*/) {}
};

}  // namespace hy_wristlog
