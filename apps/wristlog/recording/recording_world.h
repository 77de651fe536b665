#pragma once

#include "platform/platform.h"

namespace wristlog {

/// Changes the thread's world as long as this lives: its clock always shows one moment (a date, UTC) and
/// local time is UTC, so that what is made of a recording does not depend on when it is made. Message boxes
/// are shown on standard error.
class RecordingWorld {
 public:
  /// How dates and numbers are written: the same everywhere ("2026-03-02 09:02:00"), or as the user's locale
  /// has them.
  enum class Texts : std::uint8_t { Neutral, Users };

  /// Raises InvalidCall for a moment outside the years 100 to 9999.
  explicit RecordingWorld(double utc, Texts texts = Texts::Neutral);

 private:
  hy_wristlog::platform::WorldScope scope_;
};

}  // namespace wristlog
