#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// The system's clock. Local time follows TZ, also when the program changes it.
class LinuxClock final : public Clock {
 public:
  CivilTime utc() override;
  CivilTime local() override;
  double timer() override;
  void sleep(std::chrono::milliseconds duration) override;
  void idle() override;
};

}  // namespace hy_wristlog::platform
