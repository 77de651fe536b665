#include <benchmark/benchmark.h>

#include <random>

#include "pendrel/decoder.h"

namespace hy_wristlog {
namespace {

/// A full memory of a steps model, one byte in sixteen a possible marker. Argument: the mode.
void decodeFullMemory(benchmark::State& state) {
  constexpr std::uint8_t MarkerByte = 254;
  PendrelRecord record;
  record.SerialNumber = "B901234";
  record.AcquisitionMode = static_cast<enmPDLoggingMode>(state.range(0));
  record.EpochLength = 15;
  record.ActivityCalibration = 100;
  record.BytesUsed = record.Get_MaxBytesUsed();
  std::mt19937 random(1);
  record.RawData.resize(65536);
  for (std::uint8_t& byte : record.RawData)
    byte = random() % 16 == 0 ? MarkerByte : static_cast<std::uint8_t>(random());
  for (auto _ : state) {
    decodeSamples(record);
    benchmark::ClobberMemory();
  }
  state.counters["samples/s"] =
      benchmark::Counter(static_cast<double>(record.Samples), benchmark::Counter::kIsIterationInvariantRate);
  state.SetBytesProcessed(state.iterations() * record.BytesUsed);
}

BENCHMARK(decodeFullMemory)
    ->Arg(PD_Mode_ActivityOnly)
    ->Arg(PD_Mode_ActivityAndSteps)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hy_wristlog
