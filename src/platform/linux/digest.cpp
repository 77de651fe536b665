#include "platform/digest.h"

#include <cerrno>

#include "platform/linux/openssl_support.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {

Sha256Digest sha256(std::span<const std::uint8_t> bytes) {
  const OpensslErrorsForgotten forgotten;
  Sha256Digest digest{};
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
    raiseSystemError(ENOTSUP);
  return digest;
}

}  // namespace hy_wristlog::platform
