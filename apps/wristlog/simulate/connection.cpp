#include "simulate/connection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <stdexcept>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

constexpr const char* Loopback = "127.0.0.1";

[[noreturn]] void raise(const ListenAddress& address, const std::string& why) {
  throw hy_wristlog::Failure(hy_wristlog::FailureNumber::PortNotAvailable, "wristlog",
                             "Cannot listen at " + address.Host + ":" + address.Port + ": " + why);
}

bool isPortNumber(const std::string& text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc{} && end == text.data() + text.size() && number <= UINT16_MAX;
}

std::string nameOf(const sockaddr_storage& address, socklen_t length) {
  std::array<char, NI_MAXHOST> host{};
  std::array<char, NI_MAXSERV> port{};
  if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, host.data(), host.size(),
                    port.data(), port.size(), NI_NUMERICHOST | NI_NUMERICSERV) != 0)
    return {};
  const std::string name = host.data();
  return (name.find(':') == std::string::npos ? name : "[" + name + "]") + ":" + port.data();
}

void set(int socket, int level, int option, int value) {
  ::setsockopt(socket, level, option, &value, sizeof value);
}

/// A client that has vanished must not hold the port for ever.
void noticeSilence(int socket) {
  constexpr int QuietSeconds = 10, EverySeconds = 5, Probes = 3, UnansweredMilliseconds = 25000;
  set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  set(socket, IPPROTO_TCP, TCP_KEEPIDLE, QuietSeconds);
  set(socket, IPPROTO_TCP, TCP_KEEPINTVL, EverySeconds);
  set(socket, IPPROTO_TCP, TCP_KEEPCNT, Probes);
  set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, UnansweredMilliseconds);
}

}  // namespace

std::size_t Connection::read(std::span<std::uint8_t> into) {
  const ssize_t count = ::recv(socket_.get(), into.data(), into.size(), 0);
  if (count > 0) return static_cast<std::size_t>(count);
  if (count == 0 || (errno != EAGAIN && errno != EINTR)) end();
  return 0;
}

std::size_t Connection::write(std::span<const std::uint8_t> bytes) {
  const ssize_t count = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno != EAGAIN && errno != EINTR) end();
  return 0;
}

short Connection::waitsFor(bool hasOutput) const { return hasOutput ? POLLOUT : 0; }

void Connection::endWriting() { ::shutdown(socket_.get(), SHUT_WR); }

void Connection::checkBroken() {
  pollfd state{socket_.get(), 0, 0};
  if (::poll(&state, 1, 0) > 0 && (state.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) end();
}

ListenAddress listenAddress(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  ListenAddress address{colon == std::string::npos ? "" : text.substr(0, colon),
                        colon == std::string::npos ? text : text.substr(colon + 1)};
  const bool isBracketed = address.Host.starts_with('[') && address.Host.ends_with(']');
  if (isBracketed) address.Host = address.Host.substr(1, address.Host.size() - 2);
  if (!isPortNumber(address.Port) || (!isBracketed && address.Host.find(':') != std::string::npos))
    throw std::invalid_argument("\"" + text + "\" is no address such as 127.0.0.1:7000 or [::1]:7000");
  if (address.Host.empty()) address.Host = Loopback;
  return address;
}

platform::Descriptor listenAt(const ListenAddress& address) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (const int error = ::getaddrinfo(address.Host.c_str(), address.Port.c_str(), &hints, &found); error != 0)
    raise(address, ::gai_strerror(error));
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> list(found, ::freeaddrinfo);
  platform::Descriptor listener{::socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
  constexpr int Waiting = 8;
  if (listener) {
    set(listener.get(), SOL_SOCKET, SO_REUSEADDR, 1);
    // What a client has sent before it went away still passes the slow line, so it must not be much.
    constexpr int Unread = 4096;
    set(listener.get(), SOL_SOCKET, SO_RCVBUF, Unread);
  }
  if (!listener || ::bind(listener.get(), found->ai_addr, found->ai_addrlen) != 0 ||
      ::listen(listener.get(), Waiting) != 0)
    raise(address, platform::current().environment().errorText(errno));
  return listener;
}

std::string nameOf(const platform::Descriptor& listener) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length);
  return nameOf(address, length);
}

bool isOnLoopback(const platform::Descriptor& listener) {
  const std::string name = nameOf(listener);
  return name.starts_with("127.") || name.starts_with("[::1]");
}

platform::Descriptor acceptFrom(const platform::Descriptor& listener, std::string& peer) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  platform::Descriptor client{::accept4(listener.get(), reinterpret_cast<sockaddr*>(&address), &length,
                                        SOCK_NONBLOCK | SOCK_CLOEXEC)};
  if (!client) return client;
  peer = nameOf(address, length);
  set(client.get(), IPPROTO_TCP, TCP_NODELAY, 1);
  noticeSilence(client.get());
  return client;
}

}  // namespace wristlog
