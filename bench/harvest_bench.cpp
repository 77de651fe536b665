#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "commands/harvest.h"
#include "heap_peak.h"
#include "simulator/bench.h"

namespace hy_wristlog {
namespace {

namespace sim = simulator;

/// Docks at one table, each in a world of its own for the thread that works with it.
struct Table {
  Table(std::size_t count, std::chrono::hours shortest, std::chrono::hours step) {
    for (std::size_t i = 0; i < count; ++i) {
      sim::BenchOptions options = i % 2 == 0 ? sim::vividBenchOptions() : sim::kestrin2BenchOptions();
      options.World.RootFolder = Home;
      options.Dock.Place = "usb-1-" + std::to_string(i + 1);
      options.Logger.SerialNumber = "V" + std::to_string(i + 1);
      Benches.push_back(sim::makeBench(options));
      const sim::Bench& bench = Benches.back();
      bench.Logger->setUp(sim::ordinarySetup(*bench.World, sim::Mode::ActivityAndStandardLight, 15));
      bench.Logger->wear(shortest + step * static_cast<int>(i));
      const platform::WorldScope scope(bench.World);
      Docks.push_back(docks().front());
    }
  }
  ~Table() { std::filesystem::remove_all(Home); }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  /// The simulated seconds of the slowest of these docks.
  double harvest(const std::vector<Dock>& chosen) {
    std::vector<double> before;
    for (const sim::Bench& bench : Benches) before.push_back(bench.World->elapsed());
    wristlog::HarvestOptions options;
    options.Folder = Home + "/out";
    wristlog::HarvestWatch watch;
    const auto world = [this](const Dock& dock) { return Benches[placeOf(dock)].World; };
    for (const auto& outcome : wristlog::harvest({}, options, chosen, watch, world))
      IsGood = IsGood && outcome.End == wristlog::HarvestEnd::Retrieved;
    double slowest = 0;
    for (std::size_t i = 0; i < Benches.size(); ++i)
      slowest = std::max(slowest, Benches[i].World->elapsed() - before[i]);
    return slowest;
  }

  std::size_t placeOf(const Dock& dock) const {
    return static_cast<std::size_t>(
        std::find_if(Docks.begin(), Docks.end(), [&](const Dock& own) { return own.Name == dock.Name; }) -
        Docks.begin());
  }

  std::string Home =
      std::filesystem::temp_directory_path() / ("wristlog-harvest-" + std::to_string(::getpid()));
  std::vector<sim::Bench> Benches;
  std::vector<Dock> Docks;
  bool IsGood = true;
};

/// `of_slowest` is the harvest's simulated time, as part of what its slowest dock needs alone: at most 1.02.
void HarvestInSimulatedTime(benchmark::State& state) {
  constexpr std::size_t Count = 16;
  constexpr std::chrono::hours Shortest{24}, Step{12};
  for (auto _ : state) {
    double alone = 0;
    {
      Table table(Count, Shortest, Step);
      for (const Dock& dock : table.Docks) alone = std::max(alone, table.harvest({dock}));
    }
    Table table(Count, Shortest, Step);
    state.counters["of_slowest"] = table.harvest(table.Docks) / alone;
    if (!table.IsGood) state.SkipWithError("not all were retrieved");
  }
}
BENCHMARK(HarvestInSimulatedTime)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

/// The heap that each dock needs for a full memory of 1 MiB, its recording's files included: at most 32 MiB.
void HarvestMemory(benchmark::State& state) {
  constexpr std::size_t Count = 8;
  constexpr std::chrono::hours FortyDays{40 * 24};
  for (auto _ : state) {
    Table table(Count, FortyDays, std::chrono::hours(0));
    restartHeapPeak();
    const std::size_t before = heapInUse();
    table.harvest(table.Docks);
    state.counters["MiB_a_dock"] = static_cast<double>(heapPeak() - before) / Count / (1 << 20);
    if (!table.IsGood) state.SkipWithError("not all were retrieved");
  }
}
BENCHMARK(HarvestMemory)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace hy_wristlog
