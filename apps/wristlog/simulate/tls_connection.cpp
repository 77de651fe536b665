#include "simulate/tls_connection.h"

#include <algorithm>
#include <climits>
#include <utility>

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>

#include "hy_wristlog/failure.h"
#include "platform/linux/openssl_support.h"
#include "platform/platform.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

constexpr double HandshakeSeconds = 10;

void require(bool done, const std::string& words) {
  if (done) return;
  const char* const reason = ::ERR_reason_error_string(::ERR_peek_last_error());
  ::ERR_clear_error();
  throw hy_wristlog::Failure(hy_wristlog::FailureNumber::InvalidCall, "wristlog",
                             words + (reason != nullptr ? std::string(": ") + reason : ""));
}

/// A key with a password is refused, instead of asking for it at the terminal.
int noPassword(char*, int, int, void*) { return 0; }

class TlsConnection : public Connection {
 public:
  TlsConnection(platform::Descriptor socket, SSL_CTX* context)
      : Connection(std::move(socket)),
        session_(::SSL_new(context)),
        latest_(platform::current().clock().timer() + HandshakeSeconds) {
    if (session_ && ::SSL_set_fd(session_.get(), descriptor()) == 1)
      ::SSL_set_accept_state(session_.get());
    else
      end();
  }

  std::size_t read(std::span<std::uint8_t> into) override {
    if (!isReady()) return 0;
    return passed(::SSL_read(session_.get(), into.data(), lengthOf(into.size())));
  }
  std::size_t write(std::span<const std::uint8_t> bytes) override {
    if (bytes.empty() || !isReady()) return 0;
    return passed(::SSL_write(session_.get(), bytes.data(), lengthOf(bytes.size())));
  }
  void endWriting() override {
    ::SSL_shutdown(session_.get());
    ::ERR_clear_error();
    Connection::endWriting();
  }
  short waitsFor(bool hasOutput) const override {
    if (::SSL_is_init_finished(session_.get()) == 1) return Connection::waitsFor(hasOutput);
    return wantsToWrite_ ? POLLOUT : 0;
  }

 private:
  static int lengthOf(std::size_t size) { return static_cast<int>(std::min<std::size_t>(size, INT_MAX)); }

  /// Goes on with the handshake; true when it is over.
  bool isReady() {
    if (isOver()) return false;
    if (::SSL_is_init_finished(session_.get()) == 1) return true;
    passed(::SSL_do_handshake(session_.get()));
    if (::SSL_is_init_finished(session_.get()) == 1) return !isOver();
    if (platform::current().clock().timer() > latest_) end();
    return false;
  }

  std::size_t passed(int result) {
    if (result > 0) return static_cast<std::size_t>(result);
    const int reason = ::SSL_get_error(session_.get(), result);
    ::ERR_clear_error();
    wantsToWrite_ = reason == SSL_ERROR_WANT_WRITE;
    if (reason != SSL_ERROR_WANT_READ && reason != SSL_ERROR_WANT_WRITE) end();
    return 0;
  }

  std::unique_ptr<SSL, platform::OpensslDeleter<SSL_free>> session_;
  double latest_;
  bool wantsToWrite_ = false;
};

}  // namespace

struct TlsConnections::Context {
  std::unique_ptr<SSL_CTX, platform::OpensslDeleter<SSL_CTX_free>> Made{::SSL_CTX_new(::TLS_server_method())};
};

TlsConnections::TlsConnections(const TlsFiles& files) : context_(std::make_unique<Context>()) {
  SSL_CTX* const context = context_->Made.get();
  ::ERR_clear_error();
  require(context != nullptr && ::SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) == 1,
          "This machine's TLS does not work");
  ::SSL_CTX_set_default_passwd_cb(context, noPassword);
  ::SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  require(::SSL_CTX_use_certificate_chain_file(context, files.Certificate.c_str()) == 1,
          files.Certificate + " is not used as a certificate");
  const std::string& key = files.Key.empty() ? files.Certificate : files.Key;
  // A key of another kind than the certificate's is taken at first, but stands alone.
  require(::SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) == 1 &&
              ::SSL_CTX_check_private_key(context) == 1,
          key + " is not used as the certificate's key");
  if (files.ClientCa.empty()) return;
  require(::SSL_CTX_load_verify_file(context, files.ClientCa.c_str()) == 1,
          files.ClientCa + " is not used as the authority of clients");
  ::SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
}

TlsConnections::~TlsConnections() = default;

std::string TlsConnections::fingerprint() const {
  return platform::fingerprintOf(::SSL_CTX_get0_certificate(context_->Made.get()));
}

std::unique_ptr<Connection> TlsConnections::make(platform::Descriptor socket) const {
  return std::make_unique<TlsConnection>(std::move(socket), context_->Made.get());
}

}  // namespace wristlog
