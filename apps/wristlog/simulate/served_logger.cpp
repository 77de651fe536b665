#include "simulate/served_logger.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "hy_wristlog/failure.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

using namespace std::chrono_literals;

namespace {

constexpr auto TakenOutAfter = 1s, PluggedInAfter = 3s;
/// Bytes come together, so that the process is not woken for each of them.
constexpr std::chrono::nanoseconds ShortestWait = 1ms;
/// A request to end must be seen.
constexpr std::chrono::nanoseconds LongestWait = 500ms;

constexpr std::array<std::pair<const char*, const char*>, 4> NoticeWords{
    {{"configured", "A PC has configured the logger."},
     {"erased", "A PC has erased the recording."},
     {"stopped", "A PC has ended the recording."},
     {"downloaded", "A PC has read the whole recording."}}};

}  // namespace

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
