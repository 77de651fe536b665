#include <benchmark/benchmark.h>

#include <random>

#include "errors/GlobalState.h"
#include "platform/platform.h"
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

/// The bytes are written to a real disk.
template <class Save>
void saveOneMebibyte(benchmark::State& state, int mode, const Save& save) {
  auto world = std::make_shared<simulator::SimulatedWorld>();
  const platform::WorldScope scope(world);
  globals().LongDateTimeFormat = "dddd, MMMM dd, yyyy h:mm:ss AMPM";
  globals().ShortDateTimeFormat = "M/d/yyyy h:mm:ss AMPM";
  VardenLogger logger;
  fill(logger.record, mode);
  const std::string path = world->rootFolder() + "/file.csv";
  for (auto _ : state) save(logger, path);
  state.counters["file_MiB"] =
      static_cast<double>(platform::current().files().read(path).size()) / static_cast<double>(MostBytes);
}

void rawDump(benchmark::State& state) {
  saveOneMebibyte(state, VardenMode_ActivityOnly,
                  [](VardenLogger& logger, const std::string& path) { logger.subSaveRawDataToFile(path); });
}

void decodedReport(benchmark::State& state) {
  saveOneMebibyte(state, static_cast<int>(state.range(0)), [](VardenLogger& logger, const std::string& path) {
    logger.subSaveDecodedDataToFile(path);
  });
}

BENCHMARK(rawDump)->Unit(benchmark::kMillisecond);
BENCHMARK(decodedReport)->DenseRange(1, 5)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hy_wristlog
