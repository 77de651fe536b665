#include "simulator/wearer.h"

#include <algorithm>
#include <cmath>

namespace hy_wristlog::simulator {
namespace {

constexpr std::int64_t DaySeconds = 86400;
constexpr std::int32_t ShowerMinutes = 12;

std::uint64_t scramble(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ULL;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
  return x ^ (x >> 31);
}

/// The steps walked in an epoch with so many counts: none for little movement, at most two a second.
std::int32_t steps(double counts, std::int32_t length) {
  constexpr double WalksFrom = 150, CountsPerStep = 8;
  const double halfMinutes = length / 30.0;
  const double walked = (counts / halfMinutes - WalksFrom) / CountsPerStep;
  return static_cast<std::int32_t>(std::lround(std::clamp(walked, 0.0, 60.0) * halfMinutes));
}

bool between(std::int32_t value, std::int32_t from, std::int32_t to) { return value >= from && value < to; }

}  // namespace

void persist(SavedState& state, WearOptions& options) {
  constexpr double MostMarkers = 1000;
  state.number("wearer.seed", options.Seed);
  state.real("wearer.markers_per_day", options.MarkersPerDay, 0, MostMarkers);
  state.flag("wearer.takes_it_off", options.TakesItOff);
}

Wearer::Wearer(const WearOptions& options, std::chrono::minutes zone)
    : options_(options), zoneSeconds_(zone.count() * 60) {}

/// A number from 0 to 1 that depends on the seed, `a` and `b` alone.
double Wearer::chance(std::uint64_t a, std::uint64_t b) const {
  const std::uint64_t bits = scramble(scramble(options_.Seed + (b << 40)) ^ a);
  return static_cast<double>(bits >> 11) / 9007199254740992.0;
}

Wearer::Day Wearer::day(std::int64_t number) const {
  const auto jitter = [&](std::uint64_t what, double minutes) {
    return static_cast<std::int32_t>((chance(static_cast<std::uint64_t>(number), what) - 0.5) * 2 * minutes);
  };
  Day day{};
  day.Weekend = (number + 4) % 7 == 0 || (number + 4) % 7 == 6;
  day.Sunny = jitter(7, 100) > -20;
  day.Wakes = (day.Weekend ? 510 : 405) + jitter(1, 40);
  day.Shower = day.Wakes + 15 + jitter(2, 10);
  day.LeavesHome = day.Weekend ? 660 + jitter(3, 60) : 480 + jitter(3, 15);
  day.ComesHome = day.Weekend ? 840 + jitter(4, 90) : 1040 + jitter(4, 40);
  day.Sleeps = 1380 + jitter(5, 50);
  day.Shelf = jitter(6, 100) > 40 ? 1200 + jitter(8, 60) : 1440;
  day.ShelfEnds = day.Shelf + 25 + jitter(9, 15);
  return day;
}

double Wearer::light(const Day& day, std::int32_t minute, std::int64_t epoch) const {
  const double flicker = 0.6 + 0.8 * chance(static_cast<std::uint64_t>(epoch), 20);
  const double height = std::sin((minute - 360) / 840.0 * 3.14159265);
  const double daylight = between(minute, 360, 1200) ? (day.Sunny ? 60000.0 : 9000.0) * height * height : 0.0;
  if (!between(minute, day.Wakes, day.Sleeps)) return 0.01 * flicker;
  if (!between(minute, day.LeavesHome, day.ComesHome)) return (90 + daylight * 0.003) * flicker;
  const bool outdoors = between(minute, day.LeavesHome, day.LeavesHome + 25) || between(minute, 740, 775) ||
                        between(minute, day.ComesHome - 30, day.ComesHome) || day.Weekend;
  return (outdoors ? daylight + 20 : 380.0) * flicker;
}

double Wearer::activity(const Day& day, std::int32_t minute, std::int64_t epoch, std::int32_t length) const {
  const auto draw = [&](std::uint64_t what) { return chance(static_cast<std::uint64_t>(epoch), what); };
  const double perHalfMinute = length / 30.0;
  if (!between(minute, day.Wakes, day.Sleeps)) return draw(30) < 0.06 ? 45 * draw(31) * perHalfMinute : 0;
  const bool walking = between(minute, day.LeavesHome, day.LeavesHome + 25) ||
                       between(minute, day.ComesHome - 30, day.ComesHome) || draw(32) < 0.05;
  const double mean = walking ? 520 : between(minute, day.LeavesHome, day.ComesHome) ? 110 : 180;
  return -std::log(1.0 - 0.999 * draw(33)) * mean * perHalfMinute * 0.6;
}

EpochReading Wearer::read(std::int64_t begins, std::int32_t length) {
  const std::int64_t local = begins + zoneSeconds_;
  const std::int64_t number = local / DaySeconds;
  const auto minute = static_cast<std::int32_t>(local % DaySeconds / 60);
  const Day today = day(number);
  EpochReading reading;
  reading.OffWrist = options_.TakesItOff && (between(minute, today.Shower, today.Shower + ShowerMinutes) ||
                                             between(minute, today.Shelf, today.ShelfEnds));
  reading.OffWristFrequency =
      reading.OffWrist
          ? 900
          : static_cast<std::uint16_t>(520 + 60 * chance(static_cast<std::uint64_t>(begins), 40));
  reading.Lux = light(today, minute, begins);
  const bool outdoors = reading.Lux > 2000;
  reading.Red = reading.Lux * (outdoors ? 0.11 : 0.10);
  reading.Green = reading.Lux * 0.095;
  reading.Blue = reading.Lux * (outdoors ? 0.10 : 0.05);
  if (!reading.OffWrist) reading.Counts = activity(today, minute, begins, length);
  reading.Steps = steps(reading.Counts, length);
  const double presses = options_.MarkersPerDay * length / static_cast<double>(DaySeconds);
  reading.Button1 = chance(static_cast<std::uint64_t>(begins), 50) < presses * 0.7;
  reading.Button2 = chance(static_cast<std::uint64_t>(begins), 51) < presses * 0.3;
  return reading;
}

}  // namespace hy_wristlog::simulator
