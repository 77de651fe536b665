#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "picture/actogram.h"
#include "picture/report.h"

namespace wristlog::picture {
namespace {

/// A restless year of 15-second epochs: nothing in it compresses, and there is a marker every two hours.
PlottedRecording year() {
  constexpr std::size_t EpochsPerDay = 5760;
  std::mt19937 random(1);
  PlottedRecording recording;
  recording.Subject = "Subject 17";
  recording.Logger = "Kestrin Vivid V0012345";
  recording.Start = 1767261600;
  recording.Epoch = 15;
  recording.Epochs = 365 * EpochsPerDay;
  recording.Offsets = {{0, 60}, {1774746000, 120}, {1792890000, 60}};
  recording.Light.resize(1);
  recording.LightAxis.Unit = "lux";
  for (std::size_t i = 0; i < recording.Epochs; ++i) {
    recording.Activity.push_back(static_cast<float>(random() % 1000));
    recording.Light[0].Values.push_back(std::pow(10.0F, static_cast<float>(random() % 6000) / 1000.0F - 1));
    recording.OffWrist.push_back(i % EpochsPerDay < 100);
    if (i % 480 == 0) recording.Markers.push_back({recording.Start + static_cast<std::int64_t>(i) * 15, 1});
  }
  return recording;
}

void drawYear(benchmark::State& state) {
  const PlottedRecording recording = year();
  std::size_t picture = 0;
  std::size_t report = 0;
  for (auto _ : state) {
    const RecordedDays days = daysOf(recording);
    picture = actogramSvg(recording, days).size();
    report = reportHtml(recording, days).size();
  }
  state.counters["actogram_bytes"] = static_cast<double>(picture);
  state.counters["report_bytes"] = static_cast<double>(report);
}
BENCHMARK(drawYear)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wristlog::picture
