#include "platform/linux/remote/remote_channel.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace hy_wristlog::platform {
namespace {

bool isForLater(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

void set(int socket, int level, int option, int value) {
  ::setsockopt(socket, level, option, &value, sizeof value);
}

/// A byte at a time is sent at once, and a network that has gone silent is noticed within the limit, whether
/// bytes are on their way or not.
void prepare(int socket) {
  constexpr int QuietSeconds = 3, SecondsBetweenProbes = 1, MostProbes = 5;
  constexpr auto Limit = std::chrono::milliseconds(RemoteChannel::SilenceLimit);
  set(socket, IPPROTO_TCP, TCP_NODELAY, 1);
  set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  set(socket, IPPROTO_TCP, TCP_KEEPIDLE, QuietSeconds);
  set(socket, IPPROTO_TCP, TCP_KEEPINTVL, SecondsBetweenProbes);
  set(socket, IPPROTO_TCP, TCP_KEEPCNT, MostProbes);
  set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, static_cast<int>(Limit.count()));
}

}  // namespace

RemoteChannel::RemoteChannel(const SocketAddress& address)
    : socket_(::socket(address.Storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
  if (!socket_) throw NotConnected{errno};
  prepare(socket_.get());
  const auto* const to = reinterpret_cast<const sockaddr*>(&address.Storage);
  if (::connect(socket_.get(), to, address.Length) != 0 && errno != EINPROGRESS && errno != EINTR)
    throw NotConnected{errno};
}

bool RemoteChannel::isConnected() {
  if (connected_) return true;
  pollfd state{socket_.get(), POLLOUT, 0};
  if (::poll(&state, 1, 0) <= 0) return false;
  int error = 0;
  socklen_t size = sizeof error;
  if (::getsockopt(socket_.get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
  if (error != 0) throw NotConnected{error};
  return connected_ = true;
}

bool RemoteChannel::shakeHands() {
  telnet::Bytes none;
  receive(none);
  const bool done = tls_->shakeHands();
  flush();
  return done;
}

void RemoteChannel::send(std::span<const std::uint8_t> bytes) {
  if (tls_)
    tls_->write(bytes);
  else
    toSend_.insert(toSend_.end(), bytes.begin(), bytes.end());
  flush();
}

void RemoteChannel::flush() {
  if (tls_) tls_->takeToSend(toSend_);
  std::size_t sent = 0;
  while (sent < toSend_.size()) {
    const ssize_t count = ::send(socket_.get(), toSend_.data() + sent, toSend_.size() - sent, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && isForLater(errno)) break;
    if (count < 0) {
      // What the server has said before is still to be received.
      error_ = errno;
      return toSend_.clear();
    }
    sent += static_cast<std::size_t>(count);
  }
  toSend_.erase(toSend_.begin(), toSend_.begin() + static_cast<std::ptrdiff_t>(sent));
}

std::size_t RemoteChannel::unsent() const {
  int queued = 0;
  if (::ioctl(socket_.get(), SIOCOUTQNSD, &queued) != 0 || queued < 0) queued = 0;
  return toSend_.size() + static_cast<std::size_t>(queued);
}

void RemoteChannel::receive(telnet::Bytes& into) {
  std::array<std::uint8_t, 16384> piece;
  for (std::size_t total = 0; total < MostAtOnce && !ended_;) {
    const ssize_t count = ::recv(socket_.get(), piece.data(), piece.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && isForLater(errno)) break;
    if (count < 0) error_ = errno;
    if (count <= 0) {
      ended_ = true;
      break;
    }
    const std::span<const std::uint8_t> bytes(piece.data(), static_cast<std::size_t>(count));
    total += bytes.size();
    if (tls_)
      tls_->addReceived(bytes);
    else
      into.insert(into.end(), bytes.begin(), bytes.end());
  }
  if (!tls_ || !tls_->isReady()) return;
  tls_->read(into);
  if (tls_->isEnded()) ended_ = true;
}

void RemoteChannel::finish() {
  if (tls_ && !finished_) tls_->sayGoodbye();
  finished_ = true;
  flush();
  if (toSend_.empty()) ::shutdown(socket_.get(), SHUT_WR);
}

void RemoteChannel::await(std::chrono::microseconds longest) const {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
  const timespec limit{seconds.count(), std::chrono::nanoseconds{longest - seconds}.count()};
  const bool sends = !toSend_.empty() || !connected_;
  pollfd state{socket_.get(), static_cast<short>(sends ? POLLIN | POLLOUT : POLLIN), 0};
  ::ppoll(&state, 1, &limit, nullptr);
}

}  // namespace hy_wristlog::platform
