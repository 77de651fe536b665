#include "pendrel/decoder.h"

#include <algorithm>
#include <span>

#include "base/faults.h"
#include "base/numbers.h"

namespace hy_wristlog {
namespace {

constexpr std::int32_t MostActivity = 32767;
constexpr std::int32_t NominalCalibration = 128;
constexpr std::uint8_t MarkerByte = 254;

/// The activity that each activity byte stands for.
class ActivityScale {
 public:
  ActivityScale(std::int16_t epochLength, std::uint8_t calibration) : calibrated_(calibration != 0) {
    const auto expanded = expansionTable(epochLength);
    std::transform(expanded.begin(), expanded.end(), values_.begin(), [&](std::int32_t value) {
      if (value <= 0 || calibration == 0) return value;
      const double scaled = static_cast<double>(value * NominalCalibration) / calibration;
      return std::min(roundToInt32(scaled), MostActivity);
    });
  }

  std::int32_t operator()(std::uint8_t byte) const {
    const std::int32_t value = values_[byte];
    if (!calibrated_ && value > 0) fault::raise(fault::DivisionByZero);
    return value;
  }

 private:
  std::array<std::int32_t, 256> values_{};
  bool calibrated_;
};

/// One pass over the image; a sample enters the series as soon as its activity is known.
class SampleWalk {
 public:
  explicit SampleWalk(PendrelRecord& record)
      : record_(record),
        scale_(record.EpochLength, record.ActivityCalibration),
        image_(record.RawData),
        countsSteps_(record.Get_DeviceType() == KR_PENDREL_CRC_STEPS),
        readsSteps_(countsSteps_ && record.AcquisitionMode == PD_Mode_ActivityAndSteps) {}

  void run() {
    record_.MarkerCount = 0;
    end_ = fault::narrow<std::int32_t>(std::int64_t{record_.BytesUsed} + PendrelRecord::HeaderBytes);
    if (end_ < 1) fault::raise(fault::Subscript);
    startSeries();
    do takeSample();
    while (position_ < end_);
    if (!countsSteps_) record_.StepsArray.assign(1, EmptySteps);
    record_.Samples = static_cast<std::int32_t>(record_.ActivityArray.size());
  }

 private:
  void startSeries() {
    const std::size_t most = std::min(static_cast<std::size_t>(end_), image_.size());
    const auto restart = [&](auto& series) {
      series.clear();
      series.reserve(most);
    };
    restart(record_.ActivityArray);
    restart(record_.MarkerArray);
    if (countsSteps_) restart(record_.StepsArray);
  }

  void takeSample() {
    record_.ActivityArray.push_back(scale_(fault::at(image_, position_)));
    record_.MarkerArray.push_back(Tristate::Empty);
    if (countsSteps_) record_.StepsArray.push_back(EmptySteps);
    ++position_;
    if (readsSteps_ && position_ < end_) {
      const std::uint8_t steps = fault::at(image_, position_++);
      record_.StepsArray.back() = steps < MarkerByte ? steps : 0;
    }
    if (position_ < end_ && fault::at(image_, position_) == MarkerByte) {
      record_.MarkerArray.back() = Tristate::True;
      ++record_.MarkerCount;
      ++position_;
    }
  }

  PendrelRecord& record_;
  ActivityScale scale_;
  std::span<const std::uint8_t> image_;
  bool countsSteps_, readsSteps_;
  std::int32_t end_ = 0, position_ = PendrelRecord::HeaderBytes;
};

}  // namespace

std::array<std::int16_t, 256> expansionTable(std::int16_t epochLength) {
  std::array<std::int16_t, 256> table{};
  std::int32_t value = 0;
  for (std::int16_t& entry : table) {
    entry = fault::narrow<std::int16_t>(value);
    value = std::min(value + 1 + epochLength / 15 + value / 64, MostActivity);
  }
  table[254] = table[255] = 0;
  return table;
}

void decodeSamples(PendrelRecord& record) { SampleWalk(record).run(); }

}  // namespace hy_wristlog
