#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/linux/system_io.h"

namespace wristlog {

/// A connection to a client, which never waits and never raises.
class Connection {
 public:
  explicit Connection(hy_wristlog::platform::Descriptor socket) : socket_(std::move(socket)) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  /// Takes what has come, up to `into.size()` bytes. 0: nothing yet, or nothing ever again, see `isOver`.
  virtual std::size_t read(std::span<std::uint8_t> into);
  /// Gives as many bytes as fit and returns how many.
  virtual std::size_t write(std::span<const std::uint8_t> bytes);
  /// Notices a break even while nothing is read.
  void checkBroken();
  /// True after its end: the client has closed it, or it broke.
  bool isOver() const { return over_; }
  int descriptor() const { return socket_.get(); }
  /// What it waits for besides input: POLLOUT, or 0. `hasOutput`: something is to be written.
  virtual short waitsFor(bool hasOutput) const;
  /// Tells the client that nothing more comes.
  virtual void endWriting();

 protected:
  void end() { over_ = true; }

 private:
  hy_wristlog::platform::Descriptor socket_;
  bool over_ = false;
};

/// Makes connections that are not encrypted, or others.
class Connections {
 public:
  Connections() = default;
  Connections(const Connections&) = delete;
  Connections& operator=(const Connections&) = delete;
  virtual ~Connections() = default;

  /// "rfc2217", or "rfc2217s".
  virtual std::string scheme() const { return "rfc2217"; }
  /// SHA-256 of the server's certificate in hexadecimal digits; empty without TLS.
  virtual std::string fingerprint() const { return {}; }
  virtual std::unique_ptr<Connection> make(hy_wristlog::platform::Descriptor socket) const {
    return std::make_unique<Connection>(std::move(socket));
  }
};

/// Where a server listens.
struct ListenAddress {
  std::string Host, Port;
};

/// "127.0.0.1:7000", "[::1]:7000", "localhost:7000"; ":7000" and "7000" are of the loopback. Throws
/// std::invalid_argument for other texts.
ListenAddress listenAddress(const std::string& text);

/// A socket that listens. Raises Failure PortNotAvailable with the reason.
hy_wristlog::platform::Descriptor listenAt(const ListenAddress& address);
/// The address at which a socket listens, as in "127.0.0.1:7000".
std::string nameOf(const hy_wristlog::platform::Descriptor& listener);
/// Whether it can be reached from other machines.
bool isOnLoopback(const hy_wristlog::platform::Descriptor& listener);
/// The next client's socket and where it is; an empty descriptor when there is none.
hy_wristlog::platform::Descriptor acceptFrom(const hy_wristlog::platform::Descriptor& listener,
                                             std::string& peer);

}  // namespace wristlog
