#include "simulator/simulated_logger.h"

#include <algorithm>
#include <stdexcept>

namespace hy_wristlog::simulator {
namespace {

void fillFactoryBlock(ConfigBlock& block, const LoggerOptions& options, const Firmware& firmware,
                      Moment now) {
  const std::uint8_t version = options.BlockVersion.value_or(firmware.blockVersion());
  block.set(block::Version, version);
  block.set(block::MemoryUnits, options.MemoryUnits);
  block.setText(block::SerialNumber, options.SerialNumber);
  block.set(block::LowPowerShutdown, ShutdownNotOccurred);
  block.set(block::Model, static_cast<std::uint8_t>(options.Model));
  if (version == 2) block.setText(block::Firmware, firmware.digits());
  block.set(block::BatteryDate, std::chrono::floor<std::chrono::days>(now).count() * 86400LL);
  block.set(block::LightCalibration, options.LightCalibration);
  block.set(block::ActivityCalibration, options.ActivityCalibration);
  block.set(block::EpochLength, 30);
  block.set(block::Mode, static_cast<std::uint8_t>(Mode::Activity));
  block.set(block::DisplayFormats, 1);
  if (options.Model == LoggerModel::Vivid) {
    block.set(block::RedCalibration, options.RedCalibration);
    block.set(block::GreenCalibration, options.GreenCalibration);
    block.set(block::BlueCalibration, options.BlueCalibration);
  }
  block.set(block::Button1, 5);
  block.set(block::Button2, 12);
  block.set(block::Threshold, 2);
  block.set(block::ScoreMaximum, 255);
  block.set(block::OffWristOn, 700);
  block.set(block::OffWristOff, 800);
}

LoggerParts makeParts(const Timeline& timeline, const LoggerOptions& options) {
  if (options.MemoryUnits == 0) throw std::invalid_argument("a logger needs memory");
  const bool vivid = options.Model == LoggerModel::Vivid;
  return {options.Model,
          Firmware{options.Firmware},
          {},
          RecordingMemory{options.MemoryUnits},
          LoggerClock{timeline},
          Battery{timeline, vivid ? Battery::Kind::CoinCell : Battery::Kind::Rechargeable}};
}

}  // namespace

LoggerOptions kestrin2Options() {
  LoggerOptions options;
  options.Model = LoggerModel::Kestrin2;
  options.Firmware = "01.00.0012";
  options.DisplayFirmware.clear();
  options.SerialNumber = "K0054321";
  options.MemoryUnits = 2;
  return options;
}

void persist(SavedState& state, LoggerOptions& options) {
  constexpr std::size_t LongestText = 16;
  state.number("model", options.Model, 1, 2);
  state.text("firmware", options.Firmware, LongestText);
  state.text("display_firmware", options.DisplayFirmware, LongestText);
  state.number("memory_units", options.MemoryUnits, 1, UINT8_MAX);
}

SimulatedLogger::SimulatedLogger(Timeline& timeline, const LoggerOptions& options)
    : timeline_(timeline),
      parts_(makeParts(timeline, options)),
      recorder_(timeline, parts_),
      shell_(
          timeline, parts_, recorder_, Faults, options.DisplayFirmware,
          [this](std::span<const std::uint8_t> bytes, nanoseconds delay) {
            if (!Faults.Silent) say(bytes, delay);
          },
          [this](Notice notice) { tell(notice); }) {
  fillFactoryBlock(parts_.Block, options, parts_.Firmware, timeline.now());
  parts_.Clock.set(parts_.Clock.seconds() + options.ClockError);
  parts_.Clock.setDrift(options.ClockDrift);
}

std::vector<std::uint8_t> SimulatedLogger::recordedBytes() const {
  const auto bytes = parts_.Memory.first(parts_.Block.number(block::NextAddress));
  return {bytes.begin(), bytes.end()};
}

void SimulatedLogger::setUp(const RecordingSetup& setup) {
  recorder_.stop();
  parts_.InStorage = false;
  parts_.Block.set(block::NextAddress, 0);
  if (parts_.Firmware.hasMemoryFullFlag()) parts_.Block.set(block::MemoryFull, FlagNo);
  store(setup, parts_.Block);
  recorder_.arm();
}

void SimulatedLogger::wear(nanoseconds duration, const WearOptions& options) {
  away(options.Redock, [&] { live(duration, options); });
}

std::chrono::minutes SimulatedLogger::zone() const {
  return std::chrono::minutes{-parts_.Block.signedNumber(block::ZoneBias)};
}

void SimulatedLogger::putOn(const WearOptions& options) {
  wears_ = options;
  wearer_.emplace(options, zone());
  recorder_.setSource(&*wearer_);
}

/// Who wears it lives in the zone that it was set up for last.
void SimulatedLogger::dockChanged(bool docked) {
  recorder_.dockChanged(docked);
  if (!docked && wears_) putOn(*wears_);
}

void SimulatedLogger::persist(SavedState& state) {
  parts_.Block.persist(state);
  parts_.Memory.persist(state);
  parts_.Clock.persist(state);
  parts_.Battery.persist(state);
  state.flag("in_storage", parts_.InStorage);
  recorder_.persist(state);
  shell_.persist(state);
  WearOptions options = wears_.value_or(WearOptions{});
  simulator::persist(state, options);
  if (!state.loading()) return;
  putOn(options);
  if (recorder_.docked()) dockChanged(false);
}

void SimulatedLogger::live(nanoseconds duration, const WearOptions& options) {
  Wearer wearer{options, zone()};
  recorder_.setSource(&wearer);
  for (const Happening& happening : options.Happenings) {
    if (happening.After > duration) continue;
    timeline_.after(happening.After, [this, happening] {
      switch (happening.What) {
        case Happening::Kind::PowerReset:
          powerReset(happening.SelfTest);
          break;
        case Happening::Kind::BatteryLow:
          parts_.Battery.setCharge(0.05);
          break;
        case Happening::Kind::BatteryEmpty:
          parts_.Battery.setCharge(0.0);
          break;
        case Happening::Kind::IntoDock:
          recorder_.dockChanged(true);
          break;
        case Happening::Kind::OutOfDock:
          recorder_.dockChanged(false);
          break;
      }
    });
  }
  timeline_.advance(duration);
  recorder_.setSource(wearer_ ? &*wearer_ : nullptr);
}

void SimulatedLogger::powerReset(std::uint32_t selfTest) {
  shell_.restart();
  recorder_.powerReset(selfTest);
}

}  // namespace hy_wristlog::simulator
