#include "platform/linux/remote/tls_session.h"

#include <array>
#include <climits>

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t LongestPemFile = std::size_t{1} << 20;

[[noreturn]] void raise(std::string words) { throw TlsTrouble{std::move(words)}; }

void requireFile(const std::string& path, const char* what) {
  if (!readSmallFile(path, LongestPemFile))
    raise("is not asked: " + printable(path) + ", " + what + ", cannot be read");
}

void require(bool done, const std::string& path, const char* what) {
  if (!done) raise("is not asked: " + printable(path) + " is not " + what + " in PEM");
}

/// A step of the session. Its failures are told from those that the host has left in the thread's queue by a
/// mark of its own, and are forgotten at its end.
class Step {
 public:
  Step() { ERR_raise(ERR_LIB_USER, Mark); }

  /// The code of what has failed; 0 when nothing has.
  static unsigned long failure() {
    const unsigned long last = ::ERR_peek_last_error();
    return ERR_GET_LIB(last) == ERR_LIB_USER && ERR_GET_REASON(last) == Mark ? 0 : last;
  }

 private:
  static constexpr int Mark = 2217;
  OpensslErrorsForgotten forgotten_;
};

/// A key with a password is refused, instead of asking for it at the terminal.
int noPassword(char*, int, int, void*) { return 0; }

int takeAnyCertificate(int, X509_STORE_CTX*) { return 1; }

bool isDigits(const std::string& host) {
  return host.find(':') != std::string::npos || host.find_first_not_of("0123456789.") == std::string::npos;
}

/// What the last failure in the thread's queue means; empty for one without words of its own.
std::string wordsOfReason(int reason) {
  switch (reason) {
    case SSL_R_WRONG_VERSION_NUMBER:
    case SSL_R_HTTP_REQUEST:
    case SSL_R_UNKNOWN_PROTOCOL:
    case SSL_R_PACKET_LENGTH_TOO_LONG:
    case SSL_R_RECORD_LENGTH_MISMATCH:
      return "speaks no TLS. Use rfc2217:// for it, or set TLS up there";
    case SSL_R_UNSUPPORTED_PROTOCOL:
    case SSL_R_TLSV1_ALERT_PROTOCOL_VERSION:
      return "offers no TLS 1.2 or newer";
    case SSL_R_TLSV13_ALERT_CERTIFICATE_REQUIRED:
    case SSL_R_SSLV3_ALERT_HANDSHAKE_FAILURE:
      return "refuses a client without a certificate that it knows. Set Certificate and Key in Docks.INI";
    case SSL_R_TLSV1_ALERT_UNKNOWN_CA:
    case SSL_R_SSLV3_ALERT_BAD_CERTIFICATE:
    case SSL_R_SSLV3_ALERT_UNSUPPORTED_CERTIFICATE:
    case SSL_R_SSLV3_ALERT_CERTIFICATE_REVOKED:
    case SSL_R_SSLV3_ALERT_CERTIFICATE_EXPIRED:
    case SSL_R_SSLV3_ALERT_CERTIFICATE_UNKNOWN:
    case SSL_R_TLSV1_ALERT_ACCESS_DENIED:
    case SSL_R_TLSV1_ALERT_DECRYPT_ERROR:
      return "refuses this client's certificate";
    default:
      return {};
  }
}

}  // namespace

TlsSession::TlsSession(const TlsIdentity& identity, const std::string& host)
    : fingerprint_(identity.Fingerprint) {
  const Step step;
  context_.reset(::SSL_CTX_new(::TLS_client_method()));
  if (!context_ || ::SSL_CTX_set_min_proto_version(context_.get(), TLS1_2_VERSION) != 1)
    raise("cannot be asked: this machine's TLS does not work");
  ::SSL_CTX_set_default_passwd_cb(context_.get(), noPassword);
  trustCertificates(identity);
  if (!identity.Certificate.empty()) showOwnCertificate(identity);
  session_.reset(::SSL_new(context_.get()));
  received_ = ::BIO_new(::BIO_s_mem());
  toSend_ = ::BIO_new(::BIO_s_mem());
  if (!session_ || received_ == nullptr || toSend_ == nullptr)
    raise("cannot be asked: this machine's TLS does not work");
  // An empty one stands for bytes that have not come yet.
  BIO_set_mem_eof_return(received_, -1);
  ::SSL_set_bio(session_.get(), received_, toSend_);
  SSL_set_app_data(session_.get(), this);
  ::SSL_set_info_callback(session_.get(), noteAlert);
  expectHost(host);
  ::SSL_set_connect_state(session_.get());
}

void TlsSession::trustCertificates(const TlsIdentity& identity) {
  SSL_CTX* const context = context_.get();
  if (!fingerprint_.empty()) return ::SSL_CTX_set_verify(context, SSL_VERIFY_PEER, takeAnyCertificate);
  ::SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
  if (identity.CA.empty()) {
    ::SSL_CTX_set_default_verify_paths(context);
    return;
  }
  requireFile(identity.CA, "the CA");
  require(::SSL_CTX_load_verify_file(context, identity.CA.c_str()) == 1, identity.CA, "a certificate");
}

void TlsSession::showOwnCertificate(const TlsIdentity& identity) {
  SSL_CTX* const context = context_.get();
  const std::string& key = identity.Key.empty() ? identity.Certificate : identity.Key;
  requireFile(identity.Certificate, "the Certificate");
  requireFile(key, "the Key");
  require(::SSL_CTX_use_certificate_chain_file(context, identity.Certificate.c_str()) == 1,
          identity.Certificate, "a certificate");
  // A key of another kind than the certificate's is taken at first, but stands alone.
  require(::SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) == 1 &&
              ::SSL_CTX_check_private_key(context) == 1,
          key, "the certificate's private key without a password");
}

void TlsSession::expectHost(const std::string& host) {
  SSL* const session = session_.get();
  if (isDigits(host)) {
    const std::string digits = host.substr(0, host.find('%'));
    if (fingerprint_.empty() &&
        ::X509_VERIFY_PARAM_set1_ip_asc(::SSL_get0_param(session), digits.c_str()) != 1)
      raise("is not asked: " + digits + " is no whole address that a certificate could be for");
    return;
  }
  SSL_set_tlsext_host_name(session, host.c_str());
  if (!fingerprint_.empty()) return;
  ::SSL_set_hostflags(session, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  if (::SSL_set1_host(session, host.c_str()) != 1) raise("cannot be asked: this machine's TLS does not work");
}

bool TlsSession::shakeHands() {
  const Step step;
  const int result = ::SSL_do_handshake(session_.get());
  check(result, "the handshake");
  if (result != 1) return false;
  checkFingerprint();
  return ready_ = true;
}

void TlsSession::checkFingerprint() const {
  if (fingerprint_.empty()) return;
  const std::unique_ptr<X509, OpensslDeleter<X509_free>> certificate(
      ::SSL_get1_peer_certificate(session_.get()));
  const std::string digits = fingerprintOf(certificate.get());
  if (digits != fingerprint_)
    raise("has another certificate than the one of the Fingerprint in Docks.INI. Its own is " + digits);
}

void TlsSession::addReceived(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
  const Step step;
  if (::BIO_write(received_, bytes.data(), static_cast<int>(bytes.size())) != static_cast<int>(bytes.size()))
    raise("has sent more than fits the memory");
}

void TlsSession::read(telnet::Bytes& into) {
  const Step step;
  std::array<std::uint8_t, 16384> piece{};
  for (;;) {
    const int count = ::SSL_read(session_.get(), piece.data(), static_cast<int>(piece.size()));
    if (count <= 0) return check(count, "reading");
    into.insert(into.end(), piece.begin(), piece.begin() + count);
  }
}

void TlsSession::write(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
  const Step step;
  const int count = ::SSL_write(session_.get(), bytes.data(), static_cast<int>(bytes.size()));
  check(count, "writing");
  if (count != static_cast<int>(bytes.size())) raise("takes no more bytes");
}

void TlsSession::sayGoodbye() {
  const Step step;
  ::SSL_shutdown(session_.get());
}

void TlsSession::takeToSend(telnet::Bytes& into) {
  const Step step;
  std::array<std::uint8_t, 16384> piece{};
  for (;;) {
    const int count = ::BIO_read(toSend_, piece.data(), static_cast<int>(piece.size()));
    if (count <= 0) return;
    into.insert(into.end(), piece.begin(), piece.begin() + count);
  }
}

/// The session's own mark of an end is also set by an alert that something has failed.
void TlsSession::noteAlert(const SSL* session, int where, int value) {
  constexpr int Description = 0xFF;
  if ((where & SSL_CB_READ_ALERT) == SSL_CB_READ_ALERT && (value & Description) == SSL_AD_CLOSE_NOTIFY)
    static_cast<TlsSession*>(SSL_get_app_data(session))->ended_ = true;
}

/// SSL_get_error would also report what the host has left in the queue.
void TlsSession::check(int result, const char* what) const {
  const unsigned long error = Step::failure();
  if (result > 0 || error == 0 || ended_) return;
  const std::string untrusted = verificationTrouble();
  if (!untrusted.empty()) raise(untrusted);
  const std::string known = wordsOfReason(ERR_GET_REASON(error));
  if (!known.empty()) raise(known);
  const char* const reason = ::ERR_reason_error_string(error);
  raise(std::string("cannot be spoken with by TLS: ") + what +
        " fails: " + (reason != nullptr ? reason : "no reason is told"));
}

std::string TlsSession::verificationTrouble() const {
  if (!fingerprint_.empty()) return {};
  const long result = ::SSL_get_verify_result(session_.get());
  switch (result) {
    case X509_V_OK:
      return {};
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
      return "has a certificate for another name. Use the name in it, or its Fingerprint";
    case X509_V_ERR_CERT_HAS_EXPIRED:
      return "has a certificate that has expired. Renew it there";
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return "has a certificate that is not valid yet. Check this machine's date";
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_CERT_SIGNATURE_FAILURE:
      return "has a certificate from no authority that is trusted here. Name the right CA or the Fingerprint "
             "in Docks.INI";
    default:
      return std::string("has a certificate that is not accepted: ") +
             ::X509_verify_cert_error_string(result);
  }
}

}  // namespace hy_wristlog::platform
