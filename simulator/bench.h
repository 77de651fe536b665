#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "simulator/simulated_world.h"

namespace hy_wristlog::simulator {

struct BenchOptions {
  WorldOptions World;
  LoggerOptions Logger;
  DockOptions Dock;
  bool LoggerInDock = true;
};

struct PendrelBenchOptions {
  WorldOptions World;
  PendrelOptions Logger;
  DockOptions Dock{.Kind = DockKind::Pendreader, .ComPort = 1};
  bool LoggerInDock = true;
};

/// A world with one dock.
struct DockBench {
  std::shared_ptr<SimulatedWorld> World;
  SimulatedDock* Dock = nullptr;

  SimulatedLine& line() const { return Dock->line(); }
  /// How much of the time since the world began the busier direction of the line was occupied, 0 to 1.
  double lineShare() const;
};

/// A world with one dock and one healthy logger in it, as the logger came from the factory.
struct Bench : DockBench {
  SimulatedLogger* Logger = nullptr;
};

struct PendrelBench : DockBench {
  SimulatedPendrel* Logger = nullptr;
};

/// What the models are called.
inline constexpr std::array<std::string_view, 5> ModelNames{"vivid", "kestrin2", "pendrel13", "pendrel14",
                                                            "pendrel27"};

/// How the model of that name leaves the factory, and the dock that it needs. Throws std::invalid_argument
/// for another name.
struct ModelOptions {
  DockOptions Dock;
  std::variant<LoggerOptions, PendrelOptions> Logger;
};
ModelOptions modelOptions(std::string_view model);
/// A bench with a logger of either family.
struct ModelBench : DockBench {
  ModelOptions Options;  ///< of which it was made
  SimulatedLogger* Logger = nullptr;
  SimulatedPendrel* Pendrel = nullptr;

  Dockable& dockable() const {
    return Logger != nullptr ? static_cast<Dockable&>(*Logger) : static_cast<Dockable&>(*Pendrel);
  }
  void wear(nanoseconds duration, const WearOptions& options = {}) const {
    Logger != nullptr ? Logger->wear(duration, options) : Pendrel->wear(duration, options);
  }
  void persist(SavedState& state) const {
    Logger != nullptr ? Logger->persist(state) : Pendrel->persist(state);
  }
};

ModelBench makeBench(const ModelOptions& options, const WorldOptions& world, bool loggerInDock = true);
/// Sets a logger up for both activity and light, or activity and steps, as far as it has them, as
/// `ordinarySetup` does.
void setUpForWearing(const ModelBench& bench, std::int32_t epochLength);

BenchOptions vividBenchOptions();
BenchOptions kestrin2BenchOptions();
Bench makeBench(const BenchOptions& options);
inline Bench makeVividBench(const BenchOptions& options = vividBenchOptions()) { return makeBench(options); }
inline Bench makeKestrin2Bench(const BenchOptions& options = kestrin2BenchOptions()) {
  return makeBench(options);
}

PendrelBench makePendrelBench(const PendrelBenchOptions& options = {});

/// A set-up in the world's own zone that starts at its next full minute and never stops, with a subject.
RecordingSetup ordinarySetup(const SimulatedWorld& world, Mode mode, std::int32_t epochLength);

/// An ordinary set-up for a Pendrel logger. Its subject text holds the world's zone offset as it is at the
/// start.
PendrelSetup ordinaryPendrelSetup(const SimulatedWorld& world, std::int32_t epochLength,
                                  bool countsSteps = false);

}  // namespace hy_wristlog::simulator
