#include <benchmark/benchmark.h>

#include <random>

#include "base/formats.h"
#include "heap_peak.h"
#include "varden/decode/sample_decoder.h"
#include "varden/decode/stream_decoder.h"

namespace hy_wristlog {
namespace {

constexpr std::size_t MostBytes = std::size_t{1} << 20;

VardenRecord loggerRecord(enmDeviceType device, int mode) {
  VardenRecord record;
  record.DeviceType = device;
  record.AcquisitionMode = static_cast<enmVardenLoggingMode>(mode);
  record.FirmwareVersion = "01.01.0001";
  record.EpochLength = 15;
  record.StartTimeGMT = 43831;
  record.ActivityCalibration = 100;
  record.LightScaleCalibration = record.RedLightCalibration = record.GreenLightCalibration =
      record.BlueLightCalibration = 1;
  return record;
}

/// 1 MiB that starts with an acquisition start at 2020-01-01; below 16 everywhere else, which is in range for
/// every field of every sample. Every `statusEvery` epochs a marker.
ByteArray recording(std::int32_t recordLength, std::size_t statusEvery) {
  std::mt19937 random(1);
  ByteArray bytes{253, 1, 0, 0x00, 0xE1, 0x0B, 0x5E};
  bytes.reserve(MostBytes);
  for (std::size_t epoch = 1; bytes.size() + static_cast<std::size_t>(recordLength) + 2 <= MostBytes;
       ++epoch) {
    if (statusEvery != 0 && epoch % statusEvery == 0) bytes.insert(bytes.end(), {254, 1});
    for (std::int32_t i = 0; i < recordLength; ++i) bytes.push_back(static_cast<std::uint8_t>(random() & 15));
  }
  return bytes;
}

template <class... Series>
std::size_t bytesOf(const Series&... series) {
  return (0 + ... + (series.size() * sizeof(series[0])));
}

/// What decoding takes of the heap at its height, beside the series that it leaves, in bytes an epoch.
double heapAnEpoch(VardenRecord record, const DecodeOptions& options) {
  const std::size_t before = heapInUse();
  restartHeapPeak();
  StreamDecoder decoder(record, options);
  decoder.decode();
  decoder.finish();
  const std::size_t result =
      bytesOf(record.ActivityArray, record.LightArray, record.RedLightArray, record.GreenLightArray,
              record.BlueLightArray, record.MarkerArray, record.Marker2Array, record.WristStatusArray);
  return (static_cast<double>(heapPeak() - before) - static_cast<double>(result)) / record.Samples;
}

/// Arguments: device, mode, epochs between markers (0: none).
void decodeOneMebibyte(benchmark::State& state) {
  const auto device = static_cast<enmDeviceType>(state.range(0));
  VardenRecord record = loggerRecord(device, static_cast<int>(state.range(1)));
  const std::int32_t length = findLoggingMode(device, record.AcquisitionMode)->recordLength();
  record.RawData = recording(length, static_cast<std::size_t>(state.range(2)));
  record.BytesUsed = static_cast<std::int32_t>(record.RawData->size());
  const DecodeOptions options{
      state.range(1) > 6, 43831, [](double date) { return formatDate(date, "m/d/yyyy h:nn:ss AMPM"); }, {}};
  const double heap = heapAnEpoch(record, options);
  for (auto _ : state) {
    StreamDecoder decoder(record, options);
    decoder.decode();
    decoder.finish();
    if (decoder.result() != Decode_OK) state.SkipWithError("the recording was not decoded");
    benchmark::ClobberMemory();
  }
  state.counters["epochs/s"] =
      benchmark::Counter(static_cast<double>(record.Samples), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["heap_bytes/epoch"] = heap;
  state.SetBytesProcessed(state.iterations() * record.BytesUsed);
}

void everyMode(benchmark::internal::Benchmark* bench) {
  for (const int mode : {1, 2, 3, 4, 5, 7, 8}) bench->Args({KR_QUILLANDER, mode, 0});
  for (const int mode : {1, 2, 3, 8, 9}) bench->Args({KR_TOLKA, mode, 0});
  bench->Args({KR_QUILLANDER, 1, 100});
}

BENCHMARK(decodeOneMebibyte)->Apply(everyMode)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hy_wristlog
