#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "hy_wristlog/Class_Main.h"

namespace wristlog {

class Session;

/// What Class_Main::GetStatus has handed out.
struct Status {
  std::int32_t Code = 0;
  std::string Simple, Long;
  std::shared_ptr<hy_wristlog::Class_VardenLogger> Logger;
  std::shared_ptr<hy_wristlog::Class_Subject> Subject;
  float BatteryLife = std::numeric_limits<float>::quiet_NaN();

  /// Whether a logger was read; without one its values are all 0.
  bool wasRead() const;
  /// Whether its texts tell a state of a logger, and no trouble.
  bool isKnown() const;
  /// Whether what the logger holds is known, though its state may not be.
  bool tellsRecording() const;
};

/// Asks, and changes nothing in a logger.
Status askStatus(Session& session, hy_wristlog::enmLoggerPointer model);

}  // namespace wristlog
