#include <benchmark/benchmark.h>

#include <random>

#include "base/inside.h"
#include "errors/GlobalState.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "platform/platform.h"
#include "recording/series_csv.h"
#include "simulator/simulated_world.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

constexpr std::size_t MostBytes = std::size_t{1} << 20;

/// 1 MiB of a Kestrin Vivid that starts at 2020-01-01; below 16 everywhere else, which is in range for every
/// field of every sample.
void fill(VardenRecord& record, int mode) {
  std::mt19937 random(1);
  ByteArray bytes{253, 1, 0, 0x00, 0xE1, 0x0B, 0x5E};
  while (bytes.size() < MostBytes) bytes.push_back(static_cast<std::uint8_t>(random() & 15));
  record.DeviceType = KR_QUILLANDER;
  record.AcquisitionMode = static_cast<enmVardenLoggingMode>(mode);
  record.FirmwareVersion = "01.01.0001";
  record.EpochLength = 15;
  record.StartTimeGMT = 43831;
  record.ActivityCalibration = 100;
  record.RedLightCalibration = record.GreenLightCalibration = record.BlueLightCalibration = 1;
  record.BytesUsed = static_cast<std::int32_t>(bytes.size());
  record.RawData = std::move(bytes);
}

/// The bytes are written to a real disk. `save` writes a file of the logger.
template <class Save>
void saveOneMebibyte(benchmark::State& state, int mode, const Save& save) {
  auto world = std::make_shared<simulator::SimulatedWorld>();
  const platform::WorldScope scope(world);
  globals().LongDateTimeFormat = "dddd, MMMM dd, yyyy h:mm:ss AMPM";
  globals().ShortDateTimeFormat = "M/d/yyyy h:mm:ss AMPM";
  Class_VardenLogger face;
  VardenLogger& logger = Inside::of(face);
  fill(logger.record, mode);
  bool lowBattery = false;
  logger.fncDecodeDataArrays(lowBattery, std::nullopt, true);
  const std::string path = world->rootFolder() + "/file.csv";
  for (auto _ : state) save(face, path);
  const auto bytes = static_cast<std::int64_t>(platform::current().files().read(path).size());
  state.counters["file_MiB"] = static_cast<double>(bytes) / static_cast<double>(MostBytes);
  state.SetBytesProcessed(state.iterations() * bytes);
}

void rawDump(benchmark::State& state) {
  saveOneMebibyte(state, VardenMode_ActivityOnly, [](Class_VardenLogger& logger, const std::string& path) {
    Inside::of(logger).subSaveRawDataToFile(path);
  });
}

void decodedReport(benchmark::State& state) {
  saveOneMebibyte(state, static_cast<int>(state.range(0)),
                  [](Class_VardenLogger& logger, const std::string& path) {
                    Inside::of(logger).subSaveDecodedDataToFile(path);
                  });
}

void seriesCsv(benchmark::State& state) {
  saveOneMebibyte(state, static_cast<int>(state.range(0)),
                  [](const Class_VardenLogger& logger, const std::string& path) {
                    const auto file = platform::current().files().create(path);
                    wristlog::addSeriesCsv([&](std::string_view text) { file->add(text); }, logger);
                    file->finish();
                  });
}

BENCHMARK(rawDump)->Unit(benchmark::kMillisecond);
BENCHMARK(decodedReport)->DenseRange(1, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(seriesCsv)->DenseRange(1, 5)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hy_wristlog
