#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "program_need.h"
#include "simulator/bench.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

constexpr std::size_t MostBytes = std::size_t{1} << 20;
constexpr std::int32_t Start = 1577836800;  // 2020-01-01

/// A recording that takes much memory in its own way.
struct Worst {
  const char* Name;
  simulator::Mode Mode;
  std::size_t SampleBytes;
  bool Marks;  ///< all four of a status, before each sample
  int Gaps;    ///< of 30 days
  int GapDays;
  std::int32_t Epoch = 15;
};

constexpr Worst Recordings[] = {
    {"activity", simulator::Mode::Activity, 1, false, 0, 0},
    {"activity, events", simulator::Mode::Activity, 1, true, 0, 0},
    {"activity, events, gaps", simulator::Mode::Activity, 1, true, 24, 30},
    {"colours, gaps", simulator::Mode::ActivityAndStandardLight, 5, false, 24, 30},
    {"colours, events, gaps", simulator::Mode::ActivityAndStandardLight, 5, true, 24, 30},
    {"colours, events, one gap", simulator::Mode::ActivityAndStandardLight, 5, true, 1, 700},
    {"colours, 10 years", simulator::Mode::ActivityAndStandardLight, 5, true, 120, 30, 300}};

std::string bytesOf(const Worst& worst) {
  std::mt19937 random(1);
  std::string bytes;
  const auto add = [&](std::initializer_list<int> values) {
    for (const int value : values) bytes += static_cast<char>(value);
  };
  const auto addStart = [&](std::int32_t time) {
    add({253, 1, 0, time & 255, time >> 8 & 255, time >> 16 & 255, time >> 24 & 255});
  };
  const auto addSample = [&] {
    for (std::size_t i = 0; i < worst.SampleBytes; ++i) add({static_cast<int>(random() & 15)});
  };
  std::int32_t time = Start;
  addStart(time);
  for (int i = 0; i < worst.Gaps; ++i) {
    addSample();
    time += worst.GapDays * 86400;
    addStart(time);
  }
  while (bytes.size() + worst.SampleBytes + 2 <= MostBytes) {
    if (worst.Marks) add({254, 31});
    addSample();
  }
  return bytes;
}

/// Writes raw.bin and config.ini.
void save(const Worst& worst, const std::filesystem::path& folder) {
  const simulator::Bench bench = simulator::makeBench(simulator::vividBenchOptions());
  simulator::ConfigBlock& block = bench.Logger->block();
  simulator::RecordingSetup setup;
  setup.RecordingMode = worst.Mode;
  setup.EpochLength = worst.Epoch;
  setup.StartTime = Start;
  store(setup, block);
  const std::string bytes = bytesOf(worst);
  block.set(simulator::block::NextAddress, static_cast<std::int64_t>(bytes.size()));
  std::ofstream(folder / "raw.bin", std::ios::binary) << bytes;
  std::ofstream(folder / "config.ini")
      << "[Configuration Bytes]\r\nRaw Config Bytes="
      << Class_Tools::fncConvertByteArrayToHexString(block.image()) << "\r\n";
}

/// The program's time, and its memory at its height: at most 256 MiB for a recording of 1 MiB, whatever it
/// holds.
void peakMemory(benchmark::State& state) {
  const Worst& worst = Recordings[state.range(0)];
  const auto folder = std::filesystem::temp_directory_path() / ("wristlog-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  save(worst, folder);
  const std::string in = folder / "raw.bin", ini = folder / "config.ini";
  std::vector<std::string> decode{"decode", "--config", ini, "--raw", in, "--out", folder / "out", "--force"};
  if (worst.GapDays > 30) decode.emplace_back("--diagnostic");
  for (auto _ : state) {
    const auto measure = [&](const std::string& name, const std::vector<std::string>& arguments) {
      const Need need = needOf(arguments);
      state.counters[name + "_MiB"] = need.MiB;
      state.counters[name + "_s"] = need.Seconds;
    };
    measure("decode", decode);
    measure("report", {"report", folder, "--out", folder / "report.csv", "--force"});
    measure("dump", {"raw", "dump", folder, "--out", folder / "bytes.csv", "--force"});
  }
  state.SetLabel(worst.Name);
  std::filesystem::remove_all(folder);
}
BENCHMARK(peakMemory)->DenseRange(0, std::size(Recordings) - 1)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hy_wristlog
