#include <benchmark/benchmark.h>

#include <chrono>
#include <iterator>
#include <vector>

#include "hy_wristlog/Class_Main.h"
#include "simulator/bench.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

void Crc16(benchmark::State& state) {
  const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(state.range(0)), 0x5A);
  for (auto _ : state) benchmark::DoNotOptimize(Class_Tools::fncGetCRC16(bytes));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(Crc16)->Arg(128)->Arg(1024)->Arg(1 << 20);

/// A world of its own each time, as a host's thread finds it.
void OpenLibrary(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const simulator::Bench bench = simulator::makeVividBench();
    const platform::WorldScope scope(bench.World);
    state.ResumeTiming();
    const Class_Main main;
    benchmark::DoNotOptimize(main.Get_Version());
    state.PauseTiming();
    platform::current().objects().clear();
    state.ResumeTiming();
  }
}
BENCHMARK(OpenLibrary)->Unit(benchmark::kMillisecond);

struct Retrieved {
  const char* Name;
  simulator::Mode Mode;
  std::int32_t EpochLength;
  std::chrono::hours Worn;
  bool WakesOnInput, ShortPackets = false;
};
constexpr std::chrono::hours Week{7 * 24}, FortyDays{40 * 24};
constexpr Retrieved Retrievals[] = {
    {"1 MiB", simulator::Mode::ActivityAndStandardLight, 15, FortyDays, false},
    {"1 MiB, waking on input", simulator::Mode::ActivityAndStandardLight, 15, FortyDays, true},
    {"1 MiB in short packets, waking on input", simulator::Mode::ActivityAndStandardLight, 15, FortyDays,
     true, true},
    {"a week of minutes", simulator::Mode::ActivityAndStandardLight, 60, Week, false},
    {"a week of minutes, waking on input", simulator::Mode::ActivityAndStandardLight, 60, Week, true}};

/// A whole session with a Kestrin Vivid. `simulated_s` is its time on the simulated clock, `line_limit_s`
/// what the logger's bytes need on the line alone (11 bits a byte at 57600).
void Retrieve(benchmark::State& state) {
  const Retrieved& with = Retrievals[state.range(0)];
  state.SetLabel(with.Name);
  double simulated = 0;
  double lineLimit = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const simulator::Bench bench = simulator::makeVividBench();
    const platform::WorldScope scope(bench.World);
    bench.Logger->setUp(simulator::ordinarySetup(*bench.World, with.Mode, with.EpochLength));
    bench.Logger->wear(with.Worn);
    bench.Logger->Faults.Transfer.OnlyShortPackets = with.ShortPackets;
    const double before = bench.World->elapsed();
    const simulator::Traffic traffic = bench.line().traffic();
    state.ResumeTiming();

    Class_Main main;
    main.Let_WakeOnInput(with.WakesOnInput);
    std::shared_ptr<Class_VardenLogger> logger;
    auto subject = std::make_shared<Class_Subject>();
    enmDecodeResult result{};
    const std::int32_t code = main.Retrieve(LggrPntr_KRVivid, logger, subject, result);

    state.PauseTiming();
    if (code != 0) state.SkipWithError(("Retrieve gave " + std::to_string(code)).c_str());
    simulated = bench.World->elapsed() - before;
    lineLimit = std::chrono::duration<double>(bench.line().traffic().BusyToPc - traffic.BusyToPc).count();
    state.ResumeTiming();
  }
  state.counters["simulated_s"] = simulated;
  state.counters["line_limit_s"] = lineLimit;
}
BENCHMARK(Retrieve)->DenseRange(0, std::size(Retrievals) - 1)->Unit(benchmark::kSecond)->Iterations(2);

}  // namespace
}  // namespace hy_wristlog
