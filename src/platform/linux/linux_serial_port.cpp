#include "platform/linux/linux_serial_port.h"

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/ioctl.h>

#include "hy_wristlog/failure.h"
#include "platform/linux/line_control.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::chrono::milliseconds LongestDrain{500};

/// USB adapters hold received bytes back for up to 16 ms unless asked otherwise.
void askForLowLatency(int fd) {
  serial_struct settings{};
  if (::ioctl(fd, TIOCGSERIAL, &settings) != 0) return;
  settings.flags |= ASYNC_LOW_LATENCY;
  ::ioctl(fd, TIOCSSERIAL, &settings);
}

std::uint32_t grown(int now, int before) {
  return static_cast<std::uint32_t>(now) - static_cast<std::uint32_t>(before);
}

}  // namespace

LinuxSerialPort::LinuxSerialPort(Descriptor device, std::string name)
    : device_(std::move(device)), name_(std::move(name)) {
  int lines = 0;
  hasModemLines_ = ::ioctl(device_.get(), TIOCMGET, &lines) == 0;
  countsErrors_ = ::ioctl(device_.get(), TIOCGICOUNT, &counted_) == 0;
  // Not for a pseudo-terminal: that would stay exclusive after a program that crashed.
  if (hasModemLines_) ::ioctl(device_.get(), TIOCEXCL);
  setLine(TIOCM_DTR | TIOCM_RTS, false);
  configureLine(device_.get(), LineSettings{}, !hasModemLines_);
  askForLowLatency(device_.get());
}

LinuxSerialPort::~LinuxSerialPort() {
  const int fd = device_.get();
  const auto deadline = std::chrono::steady_clock::now() + LongestDrain;
  int queued = 0;
  while (::ioctl(fd, TIOCOUTQ, &queued) == 0 && queued > 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds{1});
  // A device that takes nothing any more would keep the close waiting for half a minute.
  if (queued > 0) discardQueued(fd);
  ::ioctl(fd, TIOCNXCL);
}

void LinuxSerialPort::raiseGone() const {
  throw Failure(FailureNumber::PortStateFailure, "MSComm",
                name_ + " has gone: it was unplugged or hung up. Plug it in and try again.");
}

void LinuxSerialPort::checkPresent() const {
  pollfd state{device_.get(), 0, 0};
  if (::poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) raiseGone();
}

void LinuxSerialPort::configure(const LineSettings& settings) {
  checkPresent();
  switch (configureLine(device_.get(), settings, !hasModemLines_)) {
    case LineResult::Done:
      return;
    case LineResult::Gone:
      raiseGone();
    case LineResult::Refused:
      break;
  }
  throw Failure(FailureNumber::PortStateFailure, "MSComm",
                name_ + " does not support " + std::to_string(settings.Baud) + " baud with " +
                    std::to_string(settings.DataBits) + " data bits and this parity and stop bit setting");
}

std::size_t LinuxSerialPort::read(std::span<std::uint8_t> into) {
  if (into.empty()) {
    checkPresent();
    return 0;
  }
  for (;;) {
    const ssize_t count = ::read(device_.get(), into.data(), into.size());
    if (count > 0) return static_cast<std::size_t>(count);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) break;
    raiseGone();
  }
  checkPresent();
  return 0;
}

std::size_t LinuxSerialPort::write(std::span<const std::uint8_t> bytes) {
  checkPresent();
  if (bytes.empty()) return 0;
  for (;;) {
    const ssize_t count = ::write(device_.get(), bytes.data(), bytes.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EINTR) continue;
    if (errno == EAGAIN) return 0;
    raiseGone();
  }
}

std::size_t LinuxSerialPort::outstanding() {
  checkPresent();
  int queued = 0;
  if (::ioctl(device_.get(), TIOCOUTQ, &queued) == 0)
    return queued > 0 ? static_cast<std::size_t>(queued) : 0;
  if (errno != ENOTTY && errno != EINVAL) raiseGone();
  return 0;
}

void LinuxSerialPort::discardInput() {
  checkPresent();
  if (!discardReceived(device_.get())) raiseGone();
}

void LinuxSerialPort::setLine(int line, bool on) {
  checkPresent();
  if (!hasModemLines_) return;
  if (::ioctl(device_.get(), on ? TIOCMBIS : TIOCMBIC, &line) != 0) raiseGone();
}

void LinuxSerialPort::setDtr(bool on) {
  setLine(TIOCM_DTR, on);
  dtr_ = on;
}

void LinuxSerialPort::setRts(bool on) { setLine(TIOCM_RTS, on); }

ModemLines LinuxSerialPort::modemLines() {
  checkPresent();
  // Nothing tells whether a logger sits at the other end, so it is taken to: its prompt decides.
  if (!hasModemLines_) return {.Cts = false, .Dsr = dtr_, .Cd = false, .Ring = false};
  int lines = 0;
  if (::ioctl(device_.get(), TIOCMGET, &lines) != 0) raiseGone();
  return {(lines & TIOCM_CTS) != 0, (lines & TIOCM_DSR) != 0, (lines & TIOCM_CAR) != 0,
          (lines & TIOCM_RNG) != 0};
}

LineErrors LinuxSerialPort::takeErrors() {
  checkPresent();
  if (!countsErrors_) return {};
  serial_icounter_struct now{};
  if (::ioctl(device_.get(), TIOCGICOUNT, &now) != 0) raiseGone();
  const serial_icounter_struct before = std::exchange(counted_, now);
  return {grown(now.overrun, before.overrun), grown(now.frame, before.frame),
          grown(now.parity, before.parity), grown(now.brk, before.brk),
          grown(now.buf_overrun, before.buf_overrun)};
}

void LinuxSerialPort::awaitInput(std::chrono::microseconds longest) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
  const timespec limit{seconds.count(), std::chrono::nanoseconds{longest - seconds}.count()};
  pollfd state{device_.get(), POLLIN, 0};
  const bool woken = ::ppoll(&state, 1, &limit, nullptr) > 0;
  // A device that has gone wakes at once, and would again in the next round.
  if (woken && (state.revents & POLLIN) == 0) std::this_thread::sleep_for(std::chrono::milliseconds{1});
}

}  // namespace hy_wristlog::platform
