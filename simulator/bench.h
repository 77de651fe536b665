#pragma once

#include <memory>
#include <string>

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
