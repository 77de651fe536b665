#pragma once

#include <netinet/tcp.h>

#include <atomic>
#include <chrono>
#include <deque>

#include "support/remote_server.h"

namespace hy_wristlog::platform {

/// What happens to the bytes of a network.
struct NetworkFaults {
  std::chrono::milliseconds Delay{};  ///< each way
  bool SplitsBytes = false;
  enum class Cut : std::uint8_t { None, Silent, Reset } CutBy = Cut::None;
  std::size_t CutAfter = 0;  ///< bytes, both ways together
};

/// A network between a client and a server of this machine.
class NetworkProxy {
 public:
  NetworkProxy(std::uint16_t target, const NetworkFaults& faults)
      : faults_(faults), server_([this, target](int client) { carry(client, target); }) {}
  NetworkProxy(const NetworkProxy&) = delete;
  NetworkProxy& operator=(const NetworkProxy&) = delete;
  ~NetworkProxy() { ends_ = true; }

  std::uint16_t port() const { return server_.port(); }

 private:
  using Clock = std::chrono::steady_clock;
  struct Piece {
    Clock::time_point Due;
    std::string Bytes;  ///< empty: the end
  };

  void carry(int client, std::uint16_t target) {
    const Descriptor server{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    const sockaddr_in address = loopback(target);
    if (::connect(server.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return;
    const int on = 1, ends[] = {client, server.get()};
    for (const int end : ends) ::setsockopt(end, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    std::deque<Piece> pieces[2];
    pollfd states[] = {{ends[0], POLLIN, 0}, {ends[1], POLLIN, 0}};
    using Cut = NetworkFaults::Cut;
    for (int ended = 0; !ends_ && ended < 2;) {
      ::poll(states, 2, 1);
      const bool isCut = faults_.CutBy != Cut::None && passed_ >= faults_.CutAfter;
      if (isCut && faults_.CutBy == Cut::Reset) return reset(client);
      for (int from = 0; from < 2; ++from) {
        if (states[from].revents != 0) take(states[from], pieces[from]);
        for (auto& way = pieces[from]; !way.empty() && way.front().Due <= Clock::now(); way.pop_front()) {
          if (!isCut) pass(way.front().Bytes, ends[1 - from]);
          if (way.front().Bytes.empty()) ++ended;
        }
      }
    }
  }
  void take(pollfd& state, std::deque<Piece>& pieces) const {
    std::array<char, 65536> bytes{};
    const ssize_t count = ::recv(state.fd, bytes.data(), bytes.size(), 0);
    if (count <= 0) state = {-1, 0, 0};
    pieces.push_back({Clock::now() + faults_.Delay,
                      std::string(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)))});
  }
  void pass(const std::string& bytes, int to) {
    if (bytes.empty()) ::shutdown(to, SHUT_WR);
    const std::size_t piece = faults_.SplitsBytes ? 1 : bytes.size();
    for (std::size_t at = 0; at < bytes.size(); at += piece)
      ::send(to, bytes.data() + at, std::min(piece, bytes.size() - at), MSG_NOSIGNAL);
    passed_ += bytes.size();
  }

  NetworkFaults faults_;
  std::atomic<bool> ends_ = false;
  std::size_t passed_ = 0;
  LocalServer server_;
};

}  // namespace hy_wristlog::platform
