#include "simulator/dock.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

#include "hy_wristlog/failure.h"

namespace hy_wristlog::simulator {

using namespace std::chrono_literals;
using platform::ComPortClass;
using platform::LineParity;
using platform::LineStopBits;
using platform::UsbDeviceClass;

namespace {

constexpr platform::LineSettings VardenSettings{57600, LineParity::None, 8, LineStopBits::Two},
    PendrelSettings{600, LineParity::None, 8, LineStopBits::One};
constexpr nanoseconds DsrRises = 120ms, DsrFalls = 30ms, WakingUp = 40ms, ShortestWakePulse = 20ms;

[[noreturn]] void raise(std::int32_t number, const char* text) { throw Failure{number, "SerialPort", text}; }

}  // namespace

/// The PC's handle on a dock. It may outlive the dock, and does not serve a dock that was plugged in again.
class SimulatedPort : public platform::SerialPort {
 public:
  SimulatedPort(const std::shared_ptr<SimulatedDock>& dock) : dock_(dock), plugCount_(dock->plugCount_) {}
  ~SimulatedPort() override {
    if (const auto found = find()) found->closePort();
  }

  void configure(const platform::LineSettings& settings) override { dock()->configure(settings); }
  std::size_t read(std::span<std::uint8_t> into) override { return dock()->line_.read(into); }
  std::size_t write(std::span<const std::uint8_t> bytes) override { return dock()->line_.write(bytes); }
  std::size_t outstanding() override { return dock()->line_.outstanding(); }
  void discardInput() override { dock()->line_.discardInput(); }
  void setDtr(bool on) override { dock()->setDtr(on); }
  void setRts(bool on) override { dock()->setRts(on); }
  platform::ModemLines modemLines() override {
    return {.Cts = false, .Dsr = dock()->dsr_, .Cd = false, .Ring = false};
  }
  platform::LineErrors takeErrors() override { return dock()->line_.takeErrors(); }
  void awaitInput(std::chrono::microseconds longest) override {
    if (const auto found = find())
      found->timeline_.advanceTo(found->timeline_.now() + longest,
                                 [&] { return found->line_.hasInput() || find() == nullptr; });
  }

 private:
  std::shared_ptr<SimulatedDock> find() const {
    auto dock = dock_.lock();
    return dock && dock->plugged_ && dock->plugCount_ == plugCount_ ? dock : nullptr;
  }
  std::shared_ptr<SimulatedDock> dock() const {
    auto dock = find();
    if (!dock) raise(FailureNumber::PortStateFailure, "The device has gone");
    return dock;
  }

  std::weak_ptr<SimulatedDock> dock_;
  std::uint32_t plugCount_;
};

SimulatedDock::SimulatedDock(Timeline& timeline, const DockOptions& options)
    : timeline_(timeline),
      options_(options),
      line_(timeline, options.Kind == DockKind::Pendreader ? PendrelSettings : VardenSettings),
      signal_(timeline, [this] { settle(); }) {}

bool SimulatedDock::onTolka() const {
  return options_.Kind == DockKind::TolkaFirst || options_.Kind == DockKind::TolkaSecond;
}

void SimulatedDock::insert(Dockable& logger) {
  if (logger_ != nullptr || logger.dock() != nullptr)
    throw std::logic_error("the dock or the logger is taken");
  logger_ = &logger;
  logger.seat(*this, line_);
  if (onTolka() && dtr_) signal_.setAfter(DsrRises);
  feed();
}

Dockable* SimulatedDock::pullOut() {
  if (logger_ == nullptr) return nullptr;
  signal_.cancel();
  dsr_ = false;
  logger_->unseat();
  return std::exchange(logger_, nullptr);
}

void SimulatedDock::plug() {
  if (plugged_) return;
  plugged_ = true;
  Faults.LockedUp = false;
}

void SimulatedDock::unplug() {
  if (!plugged_) return;
  if (open_) closePort();
  plugged_ = false;
  ++plugCount_;
}

void SimulatedDock::pullOutAfterBytes(std::uint64_t count) {
  line_.Faults.ActAfterTotal = line_.traffic().total() + count;
  line_.Faults.Action = [this] { pullOut(); };
}

void SimulatedDock::unplugAfterBytes(std::uint64_t count) {
  line_.Faults.ActAfterTotal = line_.traffic().total() + count;
  line_.Faults.Action = [this] { unplug(); };
}

std::string SimulatedDock::hardwareId() const {
  if (!options_.HardwareId.empty() || options_.Kind == DockKind::Pendreader) return options_.HardwareId;
  const char* product = options_.Kind == DockKind::Quillander   ? "4000"
                        : options_.Kind == DockKind::TolkaFirst ? "4001"
                                                                : "4002";
  return std::string{"USB\\VID_5245&PID_"} + product + "&REV_0600";
}

std::string SimulatedDock::friendlyName() const {
  if (!options_.FriendlyName.empty()) return options_.FriendlyName;
  std::string name = options_.Kind == DockKind::Quillander   ? "Kestrin Vivid Dock"
                     : options_.Kind == DockKind::Pendreader ? "Declared port"
                                                             : "Kestrin 2 Dock";
  if (!options_.NameShowsPort.value_or(options_.Kind != DockKind::TolkaFirst)) return name;
  return name + " (COM" + std::to_string(options_.ComPort) + ")";
}

std::vector<std::string> SimulatedDock::names() const {
  std::vector<std::string> names{options_.Place};
  if (!options_.SerialNumber.empty()) names.push_back(options_.SerialNumber);
  return names;
}

bool SimulatedDock::hasClass(std::string_view classGuid) const {
  const std::string_view own = options_.Kind == DockKind::TolkaFirst   ? UsbDeviceClass
                               : options_.Kind == DockKind::Pendreader ? platform::PlainPortClass
                                                                       : ComPortClass;
  return std::ranges::equal(
      own, classGuid, [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

std::unique_ptr<platform::SerialPort> SimulatedDock::open() {
  if (Faults.Open.When.strikes()) raise(Faults.Open.Number, "The port cannot be opened");
  if (open_ || Faults.Held) raise(FailureNumber::PortNotAvailable, "The port is already open");
  open_ = true;
  line_.portOpened();
  return std::make_unique<SimulatedPort>(shared_from_this());
}

void SimulatedDock::configure(const platform::LineSettings& settings) {
  if (Faults.Configure.When.strikes()) raise(Faults.Configure.Number, "The port cannot be set");
  const bool possible = settings.Baud > 0 && settings.DataBits >= 4 && settings.DataBits <= 8;
  if (Faults.LockedUp || !possible) raise(FailureNumber::PortStateFailure, "The device refuses the settings");
  line_.setPcSettings(settings);
}

void SimulatedDock::closePort() {
  setRts(false);
  setDtr(false);
  line_.portClosed();
  open_ = false;
  if (options_.Kind == DockKind::Quillander) {
    signal_.cancel();
    if (logger_ != nullptr) logger_->doze();
  }
}

void SimulatedDock::setDtr(bool on) {
  if (on == dtr_) return;
  // A Tolka dock drops its logger on every fall of DTR, however short, before it looks for it again.
  if (on && signal_.pending() && onTolka()) settle();
  dtr_ = on;
  feed();
  if (!onTolka()) return;
  if (!on)
    signal_.setAfter(DsrFalls);
  else if (contact())
    signal_.setAfter(DsrRises);
}

void SimulatedDock::setRts(bool on) {
  if (on == std::exchange(rts_, on)) return;
  feed();
  if (options_.Kind != DockKind::Quillander) return;
  if (on) {
    rtsRose_ = timeline_.now();
  } else if (contact() && timeline_.now() - rtsRose_ >= ShortestWakePulse) {
    logger_->doze();
    signal_.setAfter(WakingUp);
  }
}

void SimulatedDock::feed() {
  if (options_.Kind != DockKind::Pendreader || !contact()) return;
  const bool fed = dtr_ && rts_;
  if (fed == logger_->awake()) return;
  if (fed)
    logger_->wake();
  else
    logger_->doze();
}

/// Runs when a signal has taken its time: the logger of a Quillander dock wakes after its pulse, DSR of a
/// Tolka dock follows DTR.
void SimulatedDock::settle() {
  if (options_.Kind == DockKind::Quillander) {
    if (contact()) logger_->wake();
    return;
  }
  const bool up = dtr_ && contact();
  if (up == std::exchange(dsr_, up) || logger_ == nullptr) return;
  if (up)
    logger_->wake();
  else
    logger_->doze();
}

}  // namespace hy_wristlog::simulator
