#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "picture/recording.h"

namespace wristlog::picture {

inline constexpr std::int64_t DaySeconds = 86400, HourSeconds = 3600;

/// Local seconds since 1970: what a calendar and a clock on the wall show, counted as if there were no zone.
using LocalSeconds = std::int64_t;

/// Turns UTC into the local time of a recording.
class LocalClock {
 public:
  /// With `dayBegins` its days begin so many seconds after midnight, and it shows 00:00 then.
  explicit LocalClock(std::vector<ClockOffset> offsets, std::int64_t dayBegins = 0);

  LocalSeconds at(std::int64_t utc) const { return utc + offsetAt(utc); }
  /// Seconds that what it shows is ahead of UTC.
  std::int64_t offsetAt(std::int64_t utc) const;
  /// The first change of the clocks after a moment; the latest possible moment when there is none.
  std::int64_t nextChange(std::int64_t utc) const;

 private:
  std::vector<ClockOffset> offsets_;
  std::int64_t dayBegins_;
};

/// The local day that a moment lies in, counted from 1970-01-01.
std::int64_t dayOf(LocalSeconds time);
bool isWeekend(std::int64_t day);
std::string dateText(std::int64_t day);          ///< "2026-03-02"
std::string dayText(std::int64_t day);           ///< "Mon 2026-03-02"
std::string clockText(LocalSeconds time);        ///< "09:02"
std::string timeText(LocalSeconds time);         ///< "2026-03-02 09:02:15"
std::string durationText(std::int64_t seconds);  ///< "2 d 3 h 5 min"; seconds when it is below a minute

}  // namespace wristlog::picture
