#include "platform/linux/linux_cryptography.h"

#include <algorithm>
#include <cerrno>

#include <openssl/evp.h>
#include <openssl/rand.h>

#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {

std::array<std::uint8_t, 16> LinuxCryptography::md5(std::span<const std::uint8_t> bytes) {
  std::array<std::uint8_t, 16> digest{};
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_md5(), nullptr) != 1)
    raiseSystemError(ENOTSUP);
  return digest;
}

void LinuxCryptography::randomBytes(std::span<std::uint8_t> into) {
  constexpr std::size_t Most = 1 << 20;
  while (!into.empty()) {
    const std::size_t size = std::min(into.size(), Most);
    if (RAND_bytes(into.data(), static_cast<int>(size)) != 1) raiseSystemError(EIO);
    into = into.subspan(size);
  }
}

}  // namespace hy_wristlog::platform
