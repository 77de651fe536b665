#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// OpenSSL's libcrypto. Raises ENOTSUP where the machine's policy forbids MD5 or SHA-1.
class LinuxCryptography final : public CryptographicProvider {
 public:
  std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) override;
  void randomBytes(std::span<std::uint8_t> into) override;
  std::unique_ptr<Sha1Hash> createSha1() override;
  std::unique_ptr<KeyContainer> openContainer(const std::string& file) override;
  void deleteContainer(const std::string& file) override;
  void deleteDamagedContainer(const std::string& file) override;
};

}  // namespace hy_wristlog::platform
