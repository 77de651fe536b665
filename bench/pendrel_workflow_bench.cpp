#include <benchmark/benchmark.h>

#include <chrono>

#include "simulator/bench.h"
#include "workflows/pendrel/PendrelWorkflows.h"

namespace hy_wristlog {
namespace {

/// A full memory of 64 KB. `simulated_s` is the session's time on the simulated clock, `line_limit_s` what
/// its 16 blocks need on the line alone (10 bits a byte at 4800).
void RetrieveFullPendrel(benchmark::State& state) {
  constexpr double LineLimit = 16 * 4098 * 10 / 4800.0;
  double simulated = 0;
  for (auto _ : state) {
    state.PauseTiming();
    simulator::PendrelBenchOptions options;
    options.Logger.Model = simulator::PendrelModel::Steps;
    const simulator::PendrelBench bench = simulator::makePendrelBench(options);
    const platform::WorldScope scope(bench.World);
    bench.Logger->setUp(simulator::ordinaryPendrelSetup(*bench.World, 15, true));
    bench.Logger->wear(std::chrono::hours(24 * 6));
    const double before = bench.World->elapsed();
    state.ResumeTiming();

    Class_Main main;
    main.Let_WakeOnInput(state.range(0) != 0);
    PendrelWorkflows workflows(main);
    Class_Subject subject;
    float battery = 0;
    workflows.fncWriteCOMportToINI(static_cast<std::int16_t>(bench.Dock->comPort()));
    const std::int32_t code = workflows.RetrieveLegacy(subject, false, battery, false, false);

    state.PauseTiming();
    if (code != 0) state.SkipWithError(("RetrieveLegacy gave " + std::to_string(code)).c_str());
    if (workflows.Details().Memory.size() != 65536) state.SkipWithError("The memory was not full");
    simulated = bench.World->elapsed() - before;
    state.ResumeTiming();
  }
  state.counters["simulated_s"] = simulated;
  state.counters["line_limit_s"] = LineLimit;
}
BENCHMARK(RetrieveFullPendrel)->ArgName("wakes")->DenseRange(0, 1)->Unit(benchmark::kSecond)->Iterations(3);

}  // namespace
}  // namespace hy_wristlog
