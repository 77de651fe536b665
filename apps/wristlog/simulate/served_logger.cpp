#include "simulate/served_logger.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "engineering/zones.h"
#include "hy_wristlog/failure.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

using namespace std::chrono_literals;

namespace {

constexpr std::int32_t NewEpoch = 60;
constexpr auto TakenOutAfter = 1s, PluggedInAfter = 3s;
/// Bytes come together, so that the process is not woken for each of them.
constexpr std::chrono::nanoseconds ShortestWait = 1ms;
/// A request to end must be seen.
constexpr std::chrono::nanoseconds LongestWait = 500ms;

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

constexpr std::array<std::pair<const char*, const char*>, 4> NoticeWords{
    {{"configured", "A PC has configured the logger."},
     {"erased", "A PC has erased the recording."},
     {"stopped", "A PC has ended the recording."},
     {"downloaded", "A PC has read the whole recording."}}};

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

ServedLogger::ServedLogger(const sim::ModelBench& bench, double speed, const ServedEvents& events)
    : bench_(bench),
      timeline_(bench.World->timeline()),
      speed_(speed),
      events_(events),
      machineTime_(platform::current().clock().timer()),
      takeOut_(timeline_, [this] { bench_.Dock->pullOut(); }),
      plugAgain_(timeline_, [this] { bench_.Dock->plug(); }),
      recording_(recording()) {
  bench_.dockable().OnNotice = [this](sim::Notice notice) { hear(notice); };
}

ServedLogger::~ServedLogger() { bench_.dockable().OnNotice = nullptr; }

void ServedLogger::tell(std::string_view event, const Json& facts, const std::string& words) const {
  events_.tell(timeline_.now(), event, facts, words);
}

void ServedLogger::tellRefused(const std::string& words, const hy_wristlog::Failure& failure) const {
  tell("refused", {{"reason", failure.Description}, {"number", failure.Number}},
       words + ": " + failure.Description + ".");
}

void ServedLogger::hear(sim::Notice notice) {
  const auto& [event, words] = NoticeWords.at(static_cast<std::size_t>(notice));
  tell(event, Json::object(), words);
  changed_ = true;
}

ServedLogger::Recording ServedLogger::recording() const {
  const auto stateOf = [](const auto& logger) {
    return logger.recording() ? Recording::Yes : logger.waiting() ? Recording::Waiting : Recording::No;
  };
  return bench_.Logger != nullptr ? stateOf(*bench_.Logger) : stateOf(*bench_.Pendrel);
}

std::int64_t ServedLogger::recordedBytes() const {
  return bench_.Logger != nullptr ? bench_.Logger->block().number(sim::block::NextAddress)
                                  : static_cast<std::int64_t>(bench_.Pendrel->memory().used());
}

/// Time that nobody waits in may go faster. A logger that listens has to be patient with a client whose time
/// goes at its usual pace.
bool ServedLogger::hurries() const {
  return bench_.dockable().dock() == nullptr || !bench_.line().atRest() || bench_.dockable().busyWithItself();
}

void ServedLogger::catchUp() {
  const double now = platform::current().clock().timer();
  double left = now - machineTime_;
  machineTime_ = now;
  while (left > 0) {
    const bool fast = hurries();
    const double rate = fast ? speed_ : 1.0;
    const sim::Moment before = timeline_.now();
    const auto most =
        std::chrono::duration_cast<sim::nanoseconds>(std::chrono::duration<double>(left * rate));
    if (speed_ > 1)
      timeline_.advanceTo(before + most, [&] { return hurries() != fast; });
    else
      timeline_.advance(most);
    const sim::nanoseconds passed = timeline_.now() - before;
    if (passed >= most) break;
    left -= std::chrono::duration<double>(passed).count() / rate;
  }
  tellChanges();
}

void ServedLogger::tellChanges() {
  const bool docked = bench_.dockable().dock() != nullptr;
  if (std::exchange(docked_, docked) != docked)
    docked ? tell("docked", Json::object(), "The logger is in its dock.")
           : tell("taken_out", Json::object(), "The logger is out of its dock, and worn.");
  if (std::exchange(plugged_, plugged()) != plugged()) {
    plugged() ? tell("plugged_in", Json::object(), "The dock is plugged in again.")
              : tell("unplugged", Json::object(), "The dock is unplugged.");
    if (!plugged()) plugAgain_.setAfter(PluggedInAfter);
  }
  const Recording now = recording();
  if (std::exchange(recording_, now) == now) return;
  const Json facts{{"recorded_bytes", recordedBytes()}};
  if (now == Recording::Yes)
    tell("recording", facts, "The logger records.");
  else if (now == Recording::Waiting)
    tell("waiting", facts, "The logger waits for its start.");
  else
    tell("idle", facts, "The logger does not record any more.");
  changed_ = true;
}

std::chrono::nanoseconds ServedLogger::untilNext() const {
  const auto due = timeline_.nextDue();
  if (!due) return LongestWait;
  const double rate = hurries() ? speed_ : 1.0;
  const auto wait =
      std::chrono::duration<double, std::nano>(static_cast<double>((*due - timeline_.now()).count()) / rate);
  if (wait >= LongestWait) return LongestWait;
  return std::max(ShortestWait, std::chrono::duration_cast<std::chrono::nanoseconds>(wait));
}

std::optional<std::string> ServedLogger::open() {
  takeOut_.cancel();
  if (bench_.dockable().dock() == nullptr) bench_.Dock->insert(bench_.dockable());
  try {
    port_ = bench_.Dock->open();
  } catch (const hy_wristlog::Failure& failure) {
    tellRefused("The port could not be opened", failure);
    takeOut_.setAfter(TakenOutAfter);
    return failure.Description;
  }
  passedBefore_ = bench_.line().traffic();
  tellChanges();
  tell("opened", Json::object(), "The port was opened.");
  return std::nullopt;
}

bool ServedLogger::letGo(bool allWritten) {
  constexpr auto LongestDrain = 1s;
  if (!letGo_) letGo_ = timeline_.now();
  const bool drained = allWritten && port_->outstanding() == 0;
  if (!drained && timeline_.now() < *letGo_ + LongestDrain) return false;
  close();
  return true;
}

void ServedLogger::close() {
  letGo_.reset();
  if (!port_) return;
  port_.reset();
  takeOut_.setAfter(TakenOutAfter);
  const sim::Traffic& passed = bench_.line().traffic();
  const std::uint64_t toLogger = passed.BytesToLogger - passedBefore_.BytesToLogger,
                      toPc = passed.BytesToPc - passedBefore_.BytesToPc;
  tell("closed", {{"bytes_to_logger", toLogger}, {"bytes_to_pc", toPc}},
       "The port was closed: " + std::to_string(toLogger) + " bytes went to the logger, " +
           std::to_string(toPc) + " came from it.");
  changed_ = true;
}

void ServedLogger::end() {
  close();
  bench_.Dock->pullOut();
}

}  // namespace wristlog
