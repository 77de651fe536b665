#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "simulator/recorder.h"
#include "simulator/saved_state.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// Something that befalls a logger while it is worn.
struct Happening {
  enum class Kind : std::uint8_t { PowerReset, BatteryLow, BatteryEmpty, IntoDock, OutOfDock };

  nanoseconds After{};  ///< from the start of the wearing
  Kind What = Kind::PowerReset;
  std::uint32_t SelfTest = 0;  ///< of a power reset; 0 is passed
};

struct WearOptions {
  std::uint32_t Seed = 1;    ///< the same seed gives the same days
  double MarkersPerDay = 3;  ///< times a day that a button is pressed
  bool TakesItOff = true;    ///< for the shower, and now and then in the evening
  bool Redock = true;
  std::vector<Happening> Happenings;
};

void persist(SavedState& state, WearOptions& options);

/// A person's days: sleep, mornings, work, evenings, the light of each, and the times when the logger lies on
/// a shelf. Every reading depends on the seed and the moment alone.
class Wearer : public EpochSource {
 public:
  /// `zone` is what local time adds to UTC.
  Wearer(const WearOptions& options, std::chrono::minutes zone);

  EpochReading read(std::int64_t begins, std::int32_t length) override;

 private:
  struct Day {
    std::int32_t Wakes, LeavesHome, ComesHome, Sleeps;  ///< minutes of the local day
    std::int32_t Shower, Shelf, ShelfEnds;
    bool Weekend, Sunny;
  };

  double chance(std::uint64_t a, std::uint64_t b) const;
  Day day(std::int64_t number) const;
  double light(const Day& day, std::int32_t minute, std::int64_t epoch) const;
  double activity(const Day& day, std::int32_t minute, std::int64_t epoch, std::int32_t length) const;

  WearOptions options_;
  std::int64_t zoneSeconds_;
};

}  // namespace hy_wristlog::simulator
