#pragma once

#include <memory>
#include <string>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

namespace hy_wristlog::platform {

template <auto Free>
struct OpensslDeleter {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};

using OpensslKey = std::unique_ptr<EVP_PKEY, OpensslDeleter<EVP_PKEY_free>>;
using OpensslKeyContext = std::unique_ptr<EVP_PKEY_CTX, OpensslDeleter<EVP_PKEY_CTX_free>>;
using OpensslHash = std::unique_ptr<EVP_MD_CTX, OpensslDeleter<EVP_MD_CTX_free>>;

/// SHA-256 of a certificate in upper-case hexadecimal digits; empty when it cannot be had.
std::string fingerprintOf(const X509* certificate);

/// Removes the errors of this scope from the thread's queue at its end, since the host may use OpenSSL too.
class OpensslErrorsForgotten {
 public:
  OpensslErrorsForgotten() { ERR_set_mark(); }
  OpensslErrorsForgotten(const OpensslErrorsForgotten&) = delete;
  OpensslErrorsForgotten& operator=(const OpensslErrorsForgotten&) = delete;
  ~OpensslErrorsForgotten() { ERR_pop_to_mark(); }
};

}  // namespace hy_wristlog::platform
