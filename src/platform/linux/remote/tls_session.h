#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include <openssl/ssl.h>

#include "platform/linux/openssl_support.h"
#include "platform/remote_address.h"
#include "platform/telnet.h"

namespace hy_wristlog::platform {

/// Why a connection with TLS is not made or has ended: a sentence's end after the name of the server.
struct TlsTrouble {
  std::string Words;
};

/// The client's end of TLS 1.2 or newer, between bytes in memory: it never touches a socket. The server must
/// have a certificate for the host's name from an authority of `CA`, without one from those that this machine
/// trusts; with a `Fingerprint` it must have that very certificate instead. Members raise TlsTrouble.
class TlsSession {
 public:
  TlsSession(const TlsIdentity& identity, const std::string& host);
  TlsSession(const TlsSession&) = delete;
  TlsSession& operator=(const TlsSession&) = delete;
  ~TlsSession() = default;

  /// Whether the handshake is over.
  bool isReady() const { return ready_; }
  /// Goes on with the handshake as far as what was received lets it; true when it is over.
  bool shakeHands();
  /// Takes what came from the network.
  void addReceived(std::span<const std::uint8_t> bytes);
  /// Appends what the server has said, as far as it is there.
  void read(telnet::Bytes& into);
  void write(std::span<const std::uint8_t> bytes);
  /// Says that nothing more will be written.
  void sayGoodbye();
  /// Appends what is to go to the network.
  void takeToSend(telnet::Bytes& into);
  /// Whether the server has said that nothing more will come.
  bool isEnded() const { return ended_; }

 private:
  static void noteAlert(const SSL* session, int where, int value);
  void trustCertificates(const TlsIdentity& identity);
  void showOwnCertificate(const TlsIdentity& identity);
  void expectHost(const std::string& host);
  void checkFingerprint() const;
  /// Raises what has failed, unless `result` only says that more bytes are needed.
  void check(int result, const char* what) const;
  std::string verificationTrouble() const;

  std::unique_ptr<SSL_CTX, OpensslDeleter<SSL_CTX_free>> context_;
  std::unique_ptr<SSL, OpensslDeleter<SSL_free>> session_;
  BIO* received_ = nullptr;  ///< the session's
  BIO* toSend_ = nullptr;    ///< the session's
  std::string fingerprint_;
  bool ended_ = false, ready_ = false;
};

}  // namespace hy_wristlog::platform
