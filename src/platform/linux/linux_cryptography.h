#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// OpenSSL's libcrypto. Raises ENOTSUP where the machine's policy forbids MD5.
class LinuxCryptography final : public CryptographicProvider {
 public:
  std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) override;
  void randomBytes(std::span<std::uint8_t> into) override;
};

}  // namespace hy_wristlog::platform
