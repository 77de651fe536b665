#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/linux/remote/name_lookup.h"
#include "platform/linux/remote/tls_session.h"
#include "platform/linux/system_io.h"
#include "platform/telnet.h"

namespace hy_wristlog::platform {

/// A connection could not be made.
struct NotConnected {
  int Error = 0;  ///< errno
};

/// A TCP connection and, once it is put in, TLS on it. Nothing here blocks but `await`, or raises SIGPIPE.
/// Members raise TlsTrouble.
class RemoteChannel {
 public:
  /// Begins to connect. Raises NotConnected.
  explicit RemoteChannel(const SocketAddress& address);

  /// For so long the network may be silent before the kernel ends the connection.
  static constexpr std::chrono::seconds SilenceLimit{8};

  /// True when the connection is made. Raises NotConnected.
  bool isConnected();
  /// From now on all bytes go through `session`, whose handshake comes first.
  void encrypt(std::unique_ptr<TlsSession> session) { tls_ = std::move(session); }
  /// Goes on with the handshake; true when it is over.
  bool shakeHands();

  /// Takes bytes that are sent as the network takes them.
  void send(std::span<const std::uint8_t> bytes);
  /// Sends what the network takes now.
  void flush();
  /// How much waits in this machine.
  std::size_t unsent() const;
  /// Appends what has come, at most `MostAtOnce` bytes of it.
  void receive(telnet::Bytes& into);
  static constexpr std::size_t MostAtOnce = std::size_t{1} << 16;
  /// Whether the connection has ended or failed, and all that came before is received.
  bool isEnded() const { return ended_; }
  /// Why it failed, as errno; 0 when the server ended it.
  int error() const { return error_; }
  /// Says that nothing more will be sent, once all that waits is sent. To be called until that is so.
  void finish();
  /// Returns when something has come, when what waits can be sent, or after `longest`.
  void await(std::chrono::microseconds longest) const;

 private:
  Descriptor socket_;
  std::unique_ptr<TlsSession> tls_;
  telnet::Bytes toSend_;
  bool connected_ = false, finished_ = false, ended_ = false;
  int error_ = 0;
};

}  // namespace hy_wristlog::platform
