#include "simulate/terminal_end.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/inotify.h>

#include "hy_wristlog/failure.h"
#include "platform/linux/line_control.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

using namespace std::chrono_literals;

namespace {

constexpr sim::nanoseconds WakePulse = 30ms;
/// Until a logger in any dock is awake. What a client says before then waits.
constexpr sim::nanoseconds Waking = 150ms;
constexpr std::size_t PieceSize = 4096;

}  // namespace

TerminalEnd::TerminalEnd(ServedLogger& logger) : logger_(logger) {
  wakes_.emplace(logger.bench().World->timeline(), [this] {
    if (platform::SerialPort* const port = logger_.port()) {
      port->setRts(false);
      port->setDtr(true);
    }
  });
  make();
}

void TerminalEnd::make() {
  constexpr std::size_t LongestName = 64;
  std::array<char, LongestName> name{};
  master_ = platform::Descriptor{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)};
  if (!master_ || ::grantpt(master_.get()) != 0 || ::unlockpt(master_.get()) != 0 ||
      ::ptsname_r(master_.get(), name.data(), name.size()) != 0)
    platform::raiseSystemError();
  device_ = name.data();
  const platform::Descriptor slave = openSlave();
  // Raw, so that nothing echoes before a client has set the line.
  constexpr bool SimulatesLine = true;
  platform::configureLine(slave.get(), {}, SimulatesLine);
  // Without a watch an opening is noticed when the server looks the next time by itself.
  openings_ = platform::Descriptor{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
  if (openings_) ::inotify_add_watch(openings_.get(), device_.c_str(), IN_OPEN);
}

platform::Descriptor TerminalEnd::openSlave() const {
  platform::Descriptor slave{::open(device_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
  if (!slave) platform::raiseSystemError();
  return slave;
}

bool TerminalEnd::isOpenElsewhere() const {
  pollfd state{master_.get(), 0, 0};
  return ::poll(&state, 1, 0) >= 0 && (state.revents & POLLHUP) == 0;
}

void TerminalEnd::watch(std::vector<pollfd>& list) const {
  if (openings_) list.push_back({openings_.get(), POLLIN, 0});
  // The terminal of nobody wakes without end.
  if (!isOpenElsewhere()) return;
  const int input = listens() && toLogger_.empty() ? POLLIN : 0, output = toClient_.empty() ? 0 : POLLOUT;
  list.push_back({master_.get(), static_cast<short>(input | output), 0});
}

void TerminalEnd::serve() {
  std::array<char, PieceSize> told{};
  while (openings_ && ::read(openings_.get(), told.data(), told.size()) > 0) {
  }
  if (!logger_.plugged()) {
    logger_.close();
    toLogger_.clear();
    toClient_.clear();
    master_.close();
    return;
  }
  if (!master_) make();
  const bool isOpen = isOpenElsewhere();
  if (!isOpen) refused_ = false;
  if (isOpen && logger_.port() == nullptr && !refused_) open();
  if (logger_.port() == nullptr) return;
  followSettings();
  hear();
  speak();
  if (isOpen || !logger_.letGo(toLogger_.empty())) return;
  toLogger_.clear();
  toClient_.clear();
  // What the client has not read is not the next one's. The settings are: it may have made them already.
  platform::discardReceived(openSlave().get());
}

void TerminalEnd::open() {
  if (logger_.open()) {
    refused_ = true;
    return;
  }
  platform::SerialPort& port = *logger_.port();
  const sim::ModelBench& bench = logger_.bench();
  listensFrom_ = bench.World->timeline().now() + Waking;
  settings_ = {};
  port.setRts(true);
  if (bench.Dock->kind() == sim::DockKind::Quillander)
    wakes_->setAfter(WakePulse);
  else
    port.setDtr(true);
}

void TerminalEnd::followSettings() {
  const platform::LineSettings now = platform::settingsOfLine(master_.get());
  if (std::exchange(settings_, now) == now) return;
  try {
    logger_.port()->configure(now);
  } catch (const hy_wristlog::Failure& failure) {
    logger_.tellRefused("The settings of the port were refused", failure);
  }
}

bool TerminalEnd::listens() const {
  const sim::ModelBench& bench = logger_.bench();
  return !refused_ && (bench.dockable().awake() || bench.World->timeline().now() >= listensFrom_);
}

void TerminalEnd::hear() {
  if (!listens()) return;
  for (;;) {
    if (toLogger_.empty()) {
      toLogger_.resize(PieceSize);
      const ssize_t count = ::read(master_.get(), toLogger_.data(), toLogger_.size());
      toLogger_.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    if (toLogger_.empty()) return;
    const std::size_t taken = logger_.port()->write(toLogger_);
    toLogger_.erase(toLogger_.begin(), toLogger_.begin() + static_cast<std::ptrdiff_t>(taken));
    if (!toLogger_.empty()) return;
  }
}

void TerminalEnd::speak() {
  for (;;) {
    if (toClient_.empty()) {
      toClient_.resize(PieceSize);
      toClient_.resize(logger_.port()->read(toClient_));
    }
    if (toClient_.empty()) return;
    const ssize_t count = ::write(master_.get(), toClient_.data(), toClient_.size());
    if (count <= 0) return;
    toClient_.erase(toClient_.begin(), toClient_.begin() + count);
  }
}

}  // namespace wristlog
