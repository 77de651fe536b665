#pragma once

#include <memory>

#include <openssl/err.h>
#include <openssl/evp.h>

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

/// Removes the errors of this scope from the thread's queue at its end, since the host may use OpenSSL too.
class OpensslErrorsForgotten {
 public:
  OpensslErrorsForgotten() { ERR_set_mark(); }
  OpensslErrorsForgotten(const OpensslErrorsForgotten&) = delete;
  OpensslErrorsForgotten& operator=(const OpensslErrorsForgotten&) = delete;
  ~OpensslErrorsForgotten() { ERR_pop_to_mark(); }
};

}  // namespace hy_wristlog::platform
