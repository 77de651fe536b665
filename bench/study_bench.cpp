#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "program_need.h"
#include "simulator/bench.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

constexpr std::int64_t Recordings = 1000;

/// A week at a value a minute, of a logger of its own.
void record(const std::filesystem::path& folder, std::int64_t number) {
  constexpr std::int64_t FirstNumber = 1000000;
  simulator::BenchOptions options = simulator::vividBenchOptions();
  options.Logger.SerialNumber = "V" + std::to_string(FirstNumber + number);
  const simulator::Bench bench = simulator::makeBench(options);
  bench.Logger->setUp(simulator::ordinarySetup(*bench.World, simulator::Mode::ActivityAndSpecialLight, 60));
  bench.Logger->wear(std::chrono::days(7));
  const auto bytes = bench.Logger->recordedBytes();
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "raw.bin", std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
  std::ofstream(folder / "config.ini")
      << "[Configuration Bytes]\r\nRaw Config Bytes="
      << Class_Tools::fncConvertByteArrayToHexString(bench.Logger->block().image()) << "\r\n";
}

/// A study of many recordings: the first run, which decodes them all, and a second one, which finds nothing
/// changed.
void study(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / ("wristlog-study-" + std::to_string(getpid()));
  for (std::int64_t i = 0; i < Recordings; ++i) record(folder / "in" / std::to_string(i), i);
  for (auto _ : state)
    for (const std::string run : {"first", "again"}) {
      const Need need = needOf({"study", folder / "in", "--out", folder / "out"});
      state.counters[run + "_s"] = need.Seconds;
      state.counters[run + "_MiB"] = need.MiB;
    }
  std::filesystem::remove_all(folder);
}
BENCHMARK(study)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
}  // namespace hy_wristlog
