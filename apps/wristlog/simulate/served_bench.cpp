#include "simulate/served_bench.h"

#include <algorithm>
#include <stdexcept>
#include <variant>

#include "engineering/zones.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

using namespace std::chrono_literals;

namespace {

constexpr std::int32_t NewEpoch = 60;

std::chrono::sys_time<std::chrono::milliseconds> machineNow() {
  const hy_wristlog::CivilTime now = platform::current().clock().utc();
  const auto day = std::chrono::year(now.Year) / now.Month / now.Day;
  return std::chrono::sys_days(day) + std::chrono::hours(now.Hour) + std::chrono::minutes(now.Minute) +
         std::chrono::seconds(now.Second) + std::chrono::milliseconds(now.Millisecond);
}

/// A world that begins at a moment, in the machine's zone if the catalogue has it.
sim::WorldOptions worldAt(std::chrono::sys_time<std::chrono::milliseconds> begins) {
  sim::WorldOptions world;
  world.Begins = begins;
  for (const auto& zone : hy_wristlog::engineering::zones())
    if (zone.Local) {
      world.Zone = zone.Key;
      world.ZoneAbbreviation = zone.Abbreviation;
    }
  return world;
}

void setSerialNumber(sim::ModelOptions& options, const std::string& number) {
  if (number.empty()) return;
  const auto wrong = [](const char* words) {
    throw hy_wristlog::Failure(hy_wristlog::FailureNumber::InvalidCall, "wristlog", words);
  };
  const bool plain =
      std::ranges::all_of(number, [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'); });
  if (auto* logger = std::get_if<sim::LoggerOptions>(&options.Logger)) {
    constexpr std::size_t Longest = 15;
    if (!plain || number.size() > Longest) wrong("A serial number has up to 15 capital letters and digits");
    logger->SerialNumber = number;
  } else {
    constexpr std::size_t Digits = 4;
    if (number.size() != Digits || number.find_first_not_of("0123456789") != std::string::npos)
      wrong("The serial number of a Pendrel logger is given by its last four digits");
    std::get<sim::PendrelOptions>(options.Logger).SerialDigits = number;
  }
}

}  // namespace

sim::ModelBench makeNewBench(const NewLogger& options) {
  sim::ModelOptions model = sim::modelOptions(options.Model);
  setSerialNumber(model, options.SerialNumber);
  sim::ModelBench bench = sim::makeBench(model, worldAt(machineNow() - options.Worn), false);
  sim::WearOptions wears;
  wears.Seed = options.Seed;
  if (options.Worn > 0min) {
    sim::setUpForWearing(bench, NewEpoch);
    bench.wear(options.Worn, wears);
  }
  bench.dockable().putOn(wears);
  // The wearing has taken a moment of the machine's time.
  bench.World->advance(
      std::max(sim::nanoseconds{0}, machineNow().time_since_epoch() - bench.World->timeline().now()));
  return bench;
}

sim::ModelBench loadBench(sim::SavedState& state, const std::string& model) {
  constexpr std::size_t LongestModel = 16;
  std::string saved;
  state.text("logger", saved, LongestModel);
  if (saved != model)
    throw sim::WrongState("holds a " + (saved.empty() ? "logger without a model" : saved) + ", no " + model);
  sim::Moment now{}, savedAt{};
  state.moment("now", now);
  state.moment("saved_at", savedAt);
  state.require(now >= sim::Moment{0} && savedAt >= sim::Moment{0}, "now");
  sim::ModelOptions options = sim::modelOptions(model);
  try {
    std::visit([&](auto& logger) { persist(state, logger); }, options.Logger);
    const auto begins = std::chrono::ceil<std::chrono::milliseconds>(now);
    sim::ModelBench bench =
        sim::makeBench(options, worldAt(std::chrono::sys_time<std::chrono::milliseconds>(begins)), false);
    bench.persist(state);
    const sim::Moment passed = machineNow().time_since_epoch() - savedAt;
    bench.World->advance(std::clamp(passed, sim::Moment{0}, sim::SavedState::MostMoment - now));
    return bench;
  } catch (const std::invalid_argument& wrong) {
    throw sim::WrongState("holds no usable logger: " + std::string(wrong.what()));
  }
}

void saveBench(sim::SavedState& state, const std::string& model, const sim::ModelBench& bench) {
  std::string saved = model;
  sim::Moment now = bench.World->timeline().now(), savedAt = machineNow().time_since_epoch();
  state.text("logger", saved, saved.size());
  state.moment("now", now);
  state.moment("saved_at", savedAt);
  sim::ModelOptions options = bench.Options;
  std::visit([&](auto& logger) { persist(state, logger); }, options.Logger);
  bench.persist(state);
}

}  // namespace wristlog
