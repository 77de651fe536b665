#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <sys/socket.h>

namespace hy_wristlog::platform {

/// The address of a socket.
struct SocketAddress {
  sockaddr_storage Storage{};
  socklen_t Length = 0;
};

/// Looks a host's addresses up without keeping the caller waiting. The C library does it in a thread of its
/// own, in which no code of this library runs, so a look-up may be given up at any time: what it holds is
/// freed when a later one ends.
class NameLookup {
 public:
  NameLookup(const std::string& host, std::uint16_t port);
  NameLookup(const NameLookup&) = delete;
  NameLookup& operator=(const NameLookup&) = delete;
  ~NameLookup();

  bool isDone() const;
  /// Once it is done: the addresses in the order in which they are to be tried; none when it failed.
  std::vector<SocketAddress> addresses() const;
  /// Once it is done: why there are no addresses, as a code of getaddrinfo; 0 when there are.
  int error() const;

 private:
  struct Request;

  std::unique_ptr<Request> request_;
};

}  // namespace hy_wristlog::platform
